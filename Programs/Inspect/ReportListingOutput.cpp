#include "Platform/Foundation/DateFormatter.h"
#include "Programs/Inspect/JsonOutput.h"
#include "Programs/Inspect/PlainValueJson.h"
#include "Programs/Inspect/Printable.h"
#include "Programs/Inspect/ReportListing.h"

#include <iomanip>
#include <limits>
#include <string>

namespace Inspection {

namespace {

struct Group {
    const char* title;
    const char* key;
    std::vector<ListedFile> ReportListing::*files;
};

constexpr Group kGroups[] = {
    {"Logs",                      "logs",         &ReportListing::logs        },
    {"Crashes of the client",     "reports",      &ReportListing::reports     },
    {"Reports of other programs", "otherReports", &ReportListing::otherReports},
};

struct Answer {
    const char* title;
    const char* key;
    NS::RefPtr<NS::String> ReportListing::*path;
};

constexpr Answer kAnswers[] = {
    {"Created last",     "lastCreated",   &ReportListing::lastCreated  },
    {"Modified last",    "lastModified",  &ReportListing::lastModified },
    {"Retired last",     "lastRetired",   &ReportListing::lastRetired  },
    {"Processed last",   "lastProcessed", &ReportListing::lastProcessed},
    {"Installer's log",  "installLog",    &ReportListing::installLog   },
    {"Log of renamings", "renameLog",     &ReportListing::renameLog    },
};

constexpr int kSizeWidth = 11;
constexpr int kTitleWidth = 18;

std::string shown(const NS::String& path) {
    return printable(path.fileSystemRepresentation());
}

// The list has the newest in front; one that cannot be looked at is none.
bool isNewest(const ListedFile& file, const std::vector<ListedFile>& files) {
    return &file == &files.front() && file.attributes;
}

void printFile(const ListedFile& file, bool newest, NS::DateFormatter& dates, std::ostream& out) {
    out << (newest ? "* " : "  ");
    if (file.attributes && file.attributes->creationDate) {
        out << dates.stringFromDate(*file.attributes->creationDate)->utf8() << std::setw(kSizeWidth)
            << file.attributes->size;
    } else {
        out << std::setw(kSizeWidth + 19) << "cannot be read";
    }
    out << "  " << shown(*file.path) << '\n';
}

void printGroup(const char* title, const std::vector<ListedFile>& files, std::ostream& out) {
    NS::DateFormatter dates("yyyy-MM-dd HH:mm:ss");
    out << title << '\n';
    for (const ListedFile& file : files) {
        printFile(file, isNewest(file, files), dates, out);
    }
    out << (files.empty() ? "  none\n\n" : "\n");
}

bool isThere(const NS::String& path) {
    return NS::FileManager::defaultManager().attributesOfItemAtPath(path).has_value();
}

void printAnswer(const char* title, const NS::RefPtr<NS::String>& path, std::ostream& out) {
    out << std::left << std::setw(kTitleWidth) << title << std::right;
    if (!path) {
        out << "none\n";
    } else if (path->length() == 0) {
        out << "none with a date\n";
    } else {
        out << shown(*path) << (isThere(*path) ? "\n" : "  (not there)\n");
    }
}

void writeDate(JsonOutput& out, const char* key, const NS::RefPtr<NS::Date>& date) {
    if (date) {
        out.key(key);
        (void)writePlainValue(out, *date);
    }
}

void writeFile(JsonOutput& out, const ListedFile& file, bool newest) {
    out.beginObject();
    out.key("path");
    (void)writePlainValue(out, *file.path);
    if (file.attributes) {
        writeDate(out, "created", file.attributes->creationDate);
        writeDate(out, "modified", file.attributes->modificationDate);
        out.key("size");
        out.literal(std::to_string(file.attributes->size));
    }
    out.key("newest");
    out.literal(newest ? "true" : "false");
    out.endObject();
}

void writeFiles(JsonOutput& out, const std::vector<ListedFile>& files) {
    out.beginArray();
    for (const ListedFile& file : files) {
        writeFile(out, file, isNewest(file, files));
    }
    out.endArray();
}

} // namespace

void printReports(const ReportListing& listing, std::ostream& out) {
    for (const Group& group : kGroups) {
        printGroup(group.title, listing.*group.files, out);
    }
    for (const Answer& answer : kAnswers) {
        printAnswer(answer.title, listing.*answer.path, out);
    }
}

void printReportsAsJson(const ReportListing& listing, std::ostream& out) {
    JsonOutput json(out, std::numeric_limits<std::uint64_t>::max());
    json.beginObject();
    for (const Group& group : kGroups) {
        json.key(group.key);
        writeFiles(json, listing.*group.files);
    }
    for (const Answer& answer : kAnswers) {
        const NS::RefPtr<NS::String>& path = listing.*answer.path;
        json.key(answer.key);
        if (path) {
            (void)writePlainValue(json, *path);
        } else {
            json.literal("null");
        }
    }
    json.endObject();
    json.finish();
}

} // namespace Inspection
