#include "Programs/Inspect/Commands.h"

#include "Platform/Foundation/KeyedArchiver.h"
#include "Programs/Inspect/ArchiveJson.h"
#include "Programs/Inspect/ClassListing.h"
#include "Programs/Inspect/Files.h"
#include "Programs/Inspect/InspectionError.h"
#include "Programs/Inspect/ItemJson.h"
#include "Programs/Inspect/ItemMapping.h"
#include "Programs/Inspect/ReportListing.h"
#include "Programs/Inspect/SymbolicReport.h"
#include "Programs/Inspect/ValueReading.h"

#include <iostream>
#include <sstream>

namespace Inspection {

namespace {

// A report of many modules and a deep stack comes to some hundred kilobytes.
constexpr std::size_t kLongestReport = std::size_t{4} << 20U;

void finishOutput() {
    if (!std::cout.flush()) {
        throw Error("cannot write to standard output");
    }
}

NS::RefPtr<NS::Object> valueOf(const std::string& file, Forms forms) {
    const auto json = contentsOf(file);
    try {
        return valueFromJson(NS::charactersOf(json->bytes()), forms);
    } catch (const Error& error) {
        throw Error(nameOfInput(file) + ": " + error.what());
    }
}

void archive(const NS::RefPtr<NS::Object>& root, const std::string& file) {
    writeContents(file, NS::KeyedArchiver::archivedDataWithRootObject(root)->bytes());
}

[[noreturn]] void raiseFailures(const std::string& className,
                                const std::vector<MappingFailure>& failures) {
    std::string message = "the reply makes no " + className;
    for (const MappingFailure& failure : failures) {
        message += "\n    " + failure.reply + " (for " + failure.property + "): " + failure.reason;
    }
    throw Error(message);
}

NS::Ref<QVContentItem> itemOf(const std::string& className, const std::string& replyFile) {
    const QVContentClass* const itemClass = contentClassNamed(className);
    if (itemClass == nullptr) {
        throw Error("there is no class " + className + "; \"classes\" lists them");
    }
    const auto reply = NS::as<NS::Dictionary>(valueOf(replyFile, Forms::kNone));
    if (!reply) {
        throw Error(nameOfInput(replyFile) + ": a reply is an object");
    }
    std::vector<MappingFailure> failures;
    const auto item = mapReply(*itemClass, *reply, failures);
    if (!item) {
        raiseFailures(className, failures);
    }
    return NS::Ref<QVContentItem>(*item);
}

} // namespace

void showArchive(const std::string& file) {
    const auto data = contentsOf(file);
    try {
        printArchive(data->bytes(), std::cout);
    } catch (const Error& error) {
        throw Error(nameOfInput(file) + ": " + error.what());
    }
    finishOutput();
}

void showItem(const std::string& className, const std::string& replyFile,
              const std::optional<std::string>& archiveFile) {
    const auto item = itemOf(className, replyFile);
    if (!archiveFile) {
        printItem(item, std::cout);
    } else {
        const auto data = NS::KeyedArchiver::archivedDataWithRootObject(item);
        writeContents(*archiveFile, data->bytes());
        if (*archiveFile != "-") {
            printArchive(data->bytes(), std::cout);
        }
    }
    finishOutput();
}

void encodeValue(const std::string& valueFile, const std::string& archiveFile) {
    archive(valueOf(valueFile, Forms::kValues), archiveFile);
}

void listClasses() {
    printClasses(std::cout);
    finishOutput();
}

void showReports(ReportForm form) {
    const ReportListing listing = listReports();
    if (form == ReportForm::kJson) {
        printReportsAsJson(listing, std::cout);
    } else {
        printReports(listing, std::cout);
    }
    finishOutput();
}

void showReport(const std::string& file) {
    const auto data = contentsOf(file, kLongestReport);
    std::ostringstream notes;
    try {
        printReport(NS::charactersOf(data->bytes()), SourceLookup(), std::cout, notes);
    } catch (const Error& error) {
        throw Error(nameOfInput(file) + ": " + error.what());
    }
    finishOutput();
    std::istringstream lines(notes.str());
    for (std::string line; std::getline(lines, line);) {
        std::cerr << "quorvane-inspect: " << line << '\n';
    }
}

} // namespace Inspection
