#include "Platform/Foundation/String.h"
#include "QVApi/Content/QVContentClasses.h"
#include "Tests/Support/PrivateFolders.h"
#include "Tests/Support/Process.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <cstdint>
#include <fstream>
#include <limits>

namespace {

using Json = nlohmann::ordered_json;

// A reply with a value under each key of a class's table: a text, as every conversion but a list's
// reads one.
Json fullReply(const QVContentClass& itemClass) {
    Json reply = Json::object();
    for (const QVMapping& row : qvMappingOf(itemClass)) {
        const QVConverter& converter = qvConverterFor(itemClass, row.property);
        Json value = "1";
        if (converter.elementClass != nullptr) {
            value = Json::array({fullReply(*converter.elementClass)});
        } else if (!converter.reads(*NS::str("1"))) {
            value = Json::array({
                Json::object({{"Name", "1"}, {"SharingID", "2"}}
                )
            });
        }
        reply[std::string(row.reply)] = std::move(value);
    }
    return reply;
}

// The inspector as a person runs it.
class InspectorProcess : public Tests::FolderTest {
  protected:
    struct Result {
        int status;
        std::string output;
        std::string errors;
    };

    std::string path(const std::string& name) const { return folders.root() / name; }
    std::string write(const std::string& name, std::string_view contents) const {
        std::ofstream(path(name), std::ios::binary) << contents;
        return path(name);
    }
    Result start(const std::string& program, std::vector<std::string> arguments) const {
        Tests::Process process(program, std::move(arguments), path("out"), path("err"));
        const int status = process.waitForExit().value_or(-1);
        return {status, process.output(), process.errors()};
    }
    Result run(std::vector<std::string> arguments) const {
        return start(INSPECT_PROGRAM, std::move(arguments));
    }
    // With the program as "$0" and the arguments as "$1" and so on.
    Result shell(const std::string& command, std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), {"-c", command, INSPECT_PROGRAM});
        return start("/bin/sh", std::move(arguments));
    }
};

TEST_F(InspectorProcess, ShowsWhatItEncoded) {
    const auto value =
        write("value.json", R"({"a":[1,{"$date":"2026-11-16T06:56:27Z"}],"b":null})");
    EXPECT_EQ(run({"encode", value, path("archive")}).status, 0);
    EXPECT_TRUE(Tests::contentsOf(path("archive")).starts_with("bplist00"));
    const Result shown = run({"archive", path("archive")});
    EXPECT_EQ(shown.status, 0);
    EXPECT_EQ(Json::parse(shown.output), Json::parse(Tests::contentsOf(value)));
}

TEST_F(InspectorProcess, ReadsStandardInputAndWritesStandardOutput) {
    const auto value = write("value.json", "[1,2]");
    const Result result = shell(R"("$0" encode - - < "$1" | "$0" archive -)", {value});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "[\n  1,\n  2\n]\n");
}

TEST_F(InspectorProcess, ShowsAndArchivesTheRecordOfAReply) {
    const auto reply = write("reply.json", R"({"MaxStorage":100,"UserPlan":"Basic"})");
    const Result item = run({"item", "QVUserInfoItem", reply, "--archive", path("archive")});
    EXPECT_EQ(item.status, 0);
    const Json record = Json::parse(item.output);
    EXPECT_EQ(record["$class"], "QVUserInfoItem");
    EXPECT_EQ(record["storageMax"], 100);
    EXPECT_EQ(record["plan"], "Basic");
    EXPECT_EQ(run({"archive", path("archive")}).output, item.output);
    const Result onlyArchive = run({"item", "QVUserInfoItem", reply, "--archive", "-"});
    EXPECT_EQ(onlyArchive.output, Tests::contentsOf(path("archive")));
}

TEST_F(InspectorProcess, ShowsOfEveryClassWhatTheArchiveItMakesHolds) {
    for (const QVContentClass* const each : qvContentClasses()) {
        const std::string name = each->objectClass.name;
        const auto reply = write("reply.json", fullReply(*each).dump());
        const Result item = run({"item", name, reply, "--archive", path("archive")});
        EXPECT_EQ(item.status, 0) << item.errors;
        EXPECT_EQ(Json::parse(item.output)["$class"], name);
        EXPECT_EQ(item.output, run({"archive", path("archive")}).output);
    }
}

TEST_F(InspectorProcess, ShowsWithoutAnArchiveWhatNoneWouldHold) {
    const auto reply = write("reply.json", R"({"TotalWritten":5})");
    const Result item = run({"item", "QVChunkUploadResult", reply});
    EXPECT_EQ(Json::parse(item.output)["bytesWritten"], 5);
    const Result archived =
        run({"item", "QVChunkUploadResult", reply, "--archive", path("archive")});
    EXPECT_FALSE(Json::parse(archived.output).contains("bytesWritten"));
}

TEST_F(InspectorProcess, NamesEveryKeyOfAReplyThatFails) {
    const auto reply = write("reply.json", R"({"StorageUsed":[],"BwMax":null})");
    const Result result = run({"item", "QVUserInfoItem", reply});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    for (const char* const key : {"StorageUsed", "BwMax", "UserPlan"}) {
        EXPECT_NE(result.errors.find(key), std::string::npos) << key;
    }
    EXPECT_EQ(result.errors.find("MaxStorage"), std::string::npos);
}

TEST_F(InspectorProcess, NamesTheKeysOfAListsEntriesByTheirPaths) {
    const auto reply = write("reply.json", R"({"Files":[{"FileId":"1","Name":"a"},{"Size":[]}]})");
    const Result result = run({"item", "QVFolderListItem", reply});
    EXPECT_EQ(result.status, 1);
    for (const char* const key : {"ResponseType (for responseType)", "ParentFolderID",
                                  "Files[1].FileId (for files[1].identifier)",
                                  "Files[1].Name (for files[1].name)", "files[1].size"}) {
        EXPECT_NE(result.errors.find(key), std::string::npos) << key << '\n' << result.errors;
    }
    EXPECT_EQ(result.errors.find("Files[0]"), std::string::npos) << result.errors;
}

TEST_F(InspectorProcess, ListsEveryClassWithItsTables) {
    const Result result = run({"classes"});
    EXPECT_EQ(result.status, 0);
    for (const QVContentClass* const each : qvContentClasses()) {
        EXPECT_NE(('\n' + result.output).find('\n' + std::string(each->objectClass.name) + " : "),
                  std::string::npos)
            << each->objectClass.name;
    }
    EXPECT_NE(result.output.find("QVUserInfoItem : QVContentItem : NSObject\n    mapping\n"
                                 "        storageMax     MaxStorage\n"),
              std::string::npos);
    EXPECT_NE(result.output.find("    archived\n        identifier\n        storageMax\n"),
              std::string::npos);
}

TEST_F(InspectorProcess, RefusesAnArchiveWithoutAName) {
    const auto reply = write("reply.json", R"({"TotalWritten":5})");
    for (const Result& result : {run({"item", "QVChunkUploadResult", reply, "--archive", ""}),
                                 run({"encode", reply, ""})}) {
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(result.errors,
                  "quorvane-inspect: cannot write \"\": No such file or directory\n");
    }
}

TEST_F(InspectorProcess, ReadsAReplyFromStandardInput) {
    const auto reply = write("reply.json", R"({"TotalWritten":5})");
    const Result result = shell(R"("$0" item QVChunkUploadResult - < "$1")", {reply});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(Json::parse(result.output)["bytesWritten"], 5);
    const Result none = shell(R"("$0" item QVChunkUploadResult - < /dev/null)", {});
    EXPECT_EQ(none.status, 1);
    EXPECT_TRUE(none.errors.starts_with("quorvane-inspect: standard input: parse error"))
        << none.errors;
}

// Within seconds of the processor's time, whatever else runs; the square of them takes minutes.
TEST_F(InspectorProcess, ComesToAnEndWithRepliesOfHundredsOfThousandsOfKeys) {
    constexpr int kMany = 300'000;
    const auto item = [&](const std::string& reply) {
        return shell(R"(ulimit -t 30; "$0" item QVChunkUploadResult "$1")",
                     {write("reply.json", reply)});
    };
    std::string keys = R"({"TotalWritten":5)";
    std::string levels;
    for (int i = 0; i < kMany; ++i) {
        keys += ",\"k" + std::to_string(i) + "\":0";
        levels += R"({"TotalWritten":)";
    }
    EXPECT_EQ(item(keys + '}').status, 0);
    const Result doubled = item(keys + R"(,"k0":0})");
    EXPECT_EQ(doubled.status, 1);
    EXPECT_NE(doubled.errors.find("the key k0 stands twice, at the root"), std::string::npos);
    const Result deep = item(levels);
    EXPECT_EQ(deep.status, 1);
    EXPECT_NE(deep.errors.find("values stand too deep"), std::string::npos) << deep.errors;
}

// Also under a key that no class maps.
TEST_F(InspectorProcess, ReadsNumbersOfAnySizeInAReply) {
    const auto reply = write("reply.json", R"({"TotalWritten":1e400,"Other":[18446744073709551616],
        "MaxStorage":18446744073709551616,"StorageUsed":-1e999,"UserPlan":-99999999999999999999})");
    const Json info = Json::parse(run({"item", "QVUserInfoItem", reply}).output);
    EXPECT_EQ(info["storageMax"], 9223372036854775807);
    EXPECT_EQ(info["storageUsed"], std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(info["plan"], -1e20);
    const Result result = run({"item", "QVChunkUploadResult", reply});
    EXPECT_EQ(Json::parse(result.output)["bytesWritten"]["$real"], "inf") << result.errors;
}

TEST_F(InspectorProcess, FailsWithOneClearLine) {
    const auto junk = write("junk", "no archive");
    const std::vector<std::string> rows[] = {
        {"archive",       path("missing")},
        {                   "archive", folders.root()               },
        {           "archive",               junk                      },
        { "encode",               junk,                       path("out2")},
        {            "encode",               path("missing"),                         path("out2")},
        {                "item",               "NoSuchClass",                         junk},
        {                  "item",          "QVUserInfoItem",                         write("list.json", "[]")},
        {                                      "item",           "QVUserInfoItem",                          junk},
    };
    for (const auto& arguments : rows) {
        const Result result = run(arguments);
        EXPECT_EQ(result.status, 1) << arguments[0] << ' ' << arguments[1];
        EXPECT_EQ(result.output, "");
        EXPECT_TRUE(result.errors.starts_with("quorvane-inspect: ")) << result.errors;
        EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1) << result.errors;
    }
    EXPECT_FALSE(std::filesystem::exists(path("out2")));
}

TEST_F(InspectorProcess, FailsWhenItsOutputCannotBeWritten) {
    const auto value = write("value.json", "[1]");
    EXPECT_EQ(run({"encode", value, path("no/such/folder")}).status, 1);
    const Result full = shell(R"("$0" encode "$1" - > /dev/full)", {value});
    EXPECT_EQ(full.status, 1);
    EXPECT_NE(full.errors.find("cannot write standard output"), std::string::npos) << full.errors;
    EXPECT_EQ(shell("\"$0\" classes > /dev/full", {}).status, 1);
}

// No file may grow beyond nothing: the program's own message cannot be written either.
TEST_F(InspectorProcess, KeepsTheOldFileWhenTheNewOneCannotBeWritten) {
    const auto value = write("value.json", "[1]");
    const auto old = write("old", "old");
    const Result result =
        shell(R"(trap "" XFSZ; ulimit -f 0; "$0" encode "$1" "$2")", {value, old});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(Tests::contentsOf(old), "old");
    for (const auto& entry : std::filesystem::directory_iterator(folders.root())) {
        EXPECT_FALSE(entry.path().filename().string().starts_with(".quorvane"));
    }
}

TEST_F(InspectorProcess, AddsToWhatStandardOutputIsByName) {
    const auto value = write("value.json", "[1]");
    const Result result = shell(R"(echo first; "$0" encode "$1" /dev/stdout)", {value});
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(result.output.starts_with("first\nbplist00")) << result.output;
}

TEST_F(InspectorProcess, ListsReportsAndLeavesNothing) {
    const auto reports = folders.state() / "Logs" / "DiagnosticReports";
    EXPECT_EQ(run({"reports"}).output.find("DiagnosticReports"), std::string::npos);
    EXPECT_TRUE(std::filesystem::is_empty(folders.data()));
    EXPECT_TRUE(std::filesystem::is_empty(folders.state()));
    std::filesystem::create_directories(reports);
    std::ofstream(reports / "QVFinderExtension_a.crash") << "report";
    const Result plain = run({"reports"});
    EXPECT_EQ(plain.status, 0);
    EXPECT_NE(plain.output.find("Created last      " + reports.string()), std::string::npos);
    const Json listing = Json::parse(run({"reports", "--json"}).output);
    EXPECT_EQ(listing["reports"][0]["path"], (reports / "QVFinderExtension_a.crash").string());
    EXPECT_EQ(listing["lastModified"], (reports / "QVFinderExtension_a.crash").string());
}

TEST_F(InspectorProcess, PrintsAReportAndWhyModulesAreLeftAsTheyAre) {
    const std::string text =
        "Process:  QVFinderExtension [1]\nReport Version:  1\n\nThread 1 Crashed: a\n"
        "0   lib   0x0000000000000010 f + 1\n\nBinary Images:\n"
        "0x0000000000001000 - 0x0000000000002000  lib  <00>  /absent\n";
    const Result result = run({"report", write("a.crash", text)});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, text);
    EXPECT_EQ(result.errors, "quorvane-inspect: no source lines for lib: the build that crashed is "
                             "not at /absent\n");
    EXPECT_EQ(shell("\"$0\" report - < \"$1\"", {path("a.crash")}).output, text);
}

TEST_F(InspectorProcess, RefusesWhatIsNoReport) {
    const auto junk = write("junk", "no report\n");
    const Result result = run({"report", junk});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors,
              "quorvane-inspect: \"" + junk + "\": it is no crash report of version 1\n");
    EXPECT_EQ(run({"report", path("missing")}).status, 1);
}

TEST_F(InspectorProcess, RefusesAReportWithoutEnd) {
    const Result result = run({"report", "/dev/zero"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "quorvane-inspect: \"/dev/zero\": it is longer than 4 MiB\n");
}

TEST_F(InspectorProcess, ExplainsItself) {
    const Result help = run({"--help"});
    EXPECT_EQ(help.status, 0);
    for (const char* const command :
         {"archive", "item", "encode", "classes", "reports", "report "}) {
        EXPECT_NE(help.output.find(command), std::string::npos) << command;
    }
    EXPECT_TRUE(run({"--version"}).output.starts_with("quorvane-inspect "));
    EXPECT_NE(run({}).status, 0);
    EXPECT_NE(run({"archive"}).status, 0);
    EXPECT_NE(run({"nonsense"}).status, 0);
}

} // namespace
