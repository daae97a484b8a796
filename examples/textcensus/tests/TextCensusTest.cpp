#include "ProgramRun.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;
using namespace std::string_literals;

/// The report on `arguments`; fails the test when it is not JSON.
Json Report(ScratchFolder const& folder, std::vector<std::string> arguments, int expectedStatus = 0)
{
    arguments.insert(arguments.begin(), "--json");
    Outcome const outcome = RunProgram(folder.Path(), arguments);
    EXPECT_EQ(outcome.status, expectedStatus) << outcome.err;
    Json report = Json::parse(outcome.out, nullptr, false);
    EXPECT_TRUE(report.is_object()) << outcome.out;
    return report;
}

/// The name of the only group with files in it.
std::string OnlyGroup(Json const& groups)
{
    std::string names;
    for (auto const& [name, counts] : groups.items()) {
        if (counts["files"] != 0) {
            names += (names.empty() ? "" : ", ") + name;
        }
    }
    return names;
}

std::vector<std::string> Paths(Json const& list)
{
    std::vector<std::string> paths;
    for (Json const& item : list) {
        paths.push_back(item["path"]);
    }
    return paths;
}

/// The records of the only log in the folder "log", which is then removed. Fails the test when a
/// line is not JSON; without a log there are none.
std::vector<Json> TakeLog(ScratchFolder const& folder)
{
    std::vector<Json> records;
    fs::path const logs = folder.Path() / "log";
    if (fs::exists(logs)) {
        std::ifstream file(fs::directory_iterator(logs)->path());
        for (std::string line; std::getline(file, line);) {
            records.push_back(Json::parse(line, nullptr, false));
            EXPECT_TRUE(records.back().is_object()) << line;
        }
        fs::remove_all(logs);
    }
    return records;
}

/// The configuration beside the program's sources.
std::string LogConfig()
{
    return fs::path(__FILE__).parent_path().parent_path() / "log-config.json";
}

/// The severity and the key of each line for people, "Warn excp".
std::vector<std::string> Heads(std::string const& lines)
{
    std::vector<std::string> heads;
    std::istringstream stream(lines);
    for (std::string line; std::getline(stream, line);) {
        std::istringstream words(line);
        std::string time, severity, key;
        words >> time >> severity >> key;
        heads.push_back(severity.append(" ").append(key));
    }
    return heads;
}

TEST(TextCensusTest, EachKindOfTextIsToldApart)
{
    struct Case
    {
        int line;
        std::string bytes;
        std::string encoding;
        std::string mark;
        std::string lineEnding;
        int codeUnits;
        int lines;
        int replacements;
    };
    std::string const latin1 = "<?xml encoding='ISO-8859-1'?>";
    std::string const utf32 = "\xFF\xFE\0\0A\0\0\0"s;
    Case const cases[] = {
        {__LINE__, "", "utf-8", "none", "none", 0, 0, 0},
        {__LINE__, "a", "utf-8", "none", "none", 1, 1, 0},
        {__LINE__, "a\nb\n", "utf-8", "none", "LF", 4, 2, 0},
        {__LINE__, "a\n\nb", "utf-8", "none", "LF", 4, 3, 0},
        {__LINE__, "a\r\nb\r\n", "utf-8", "none", "CRLF", 6, 2, 0},
        {__LINE__, "a\rb", "utf-8", "none", "CR", 3, 2, 0},
        {__LINE__, "a\r", "utf-8", "none", "CR", 2, 1, 0},
        {__LINE__, "\n\r", "utf-8", "none", "mixed", 2, 2, 0},
        {__LINE__, "\r\r\n", "utf-8", "none", "mixed", 3, 2, 0},
        {__LINE__, "a\nb\r\n", "utf-8", "none", "mixed", 5, 2, 0},
        // One unit, two units; a mark is none.
        {__LINE__, "\xC3\xA9\xF0\x9F\x98\x80", "utf-8", "none", "none", 3, 1, 0},
        {__LINE__, "\xEF\xBB\xBF", "utf-8", "utf-8", "none", 0, 0, 0},
        {__LINE__, "\xEF\xBB\xBFx", "utf-8", "utf-8", "none", 1, 1, 0},
        {__LINE__, "\xFF\xFE\xE9\0\n\0"s, "utf-16le", "utf-16le", "LF", 2, 1, 0},
        {__LINE__, "<\0?\0x\0m\0l\0 \0"s, "utf-16le", "none", "none", 6, 1, 0},
        {__LINE__, utf32 + "\r\0\0\0\n\0\0\0"s, "utf-32le", "utf-32le", "CRLF", 3, 1, 0},
        {__LINE__, latin1 + "\xE9\xFF", "iso-8859-1", "none", "none", 31, 1, 0},
        // Zeros are characters wherever they stand.
        {__LINE__, "a\0b\nc\0\0"s, "utf-8", "none", "LF", 7, 2, 0},
        {__LINE__, "\0\0"s, "utf-8", "none", "none", 2, 1, 0},
        {__LINE__, "\xFF\xFE\0\0"s, "utf-32le", "utf-32le", "none", 0, 0, 0},
        {__LINE__,
         "\xFF\xFE"
         "a\0\0\0"s,
         "utf-16le", "utf-16le", "none", 2, 1, 0},
        {__LINE__, utf32 + "\0\0\0\0"s, "utf-32le", "utf-32le", "none", 2, 1, 0},
        // What the bytes spell is not a replacement; what they do not is.
        {__LINE__, "\xEF\xBF\xBD", "utf-8", "none", "none", 1, 1, 0},
        {__LINE__, "\xEF\xBF\xBD\xE9", "utf-8", "none", "none", 2, 1, 1},
        {__LINE__,
         "\xFF"
         "a\xFF\n",
         "utf-8", "none", "LF", 4, 1, 2},
        {__LINE__, "\xEF\xBB\xBF\xEF\xBF", "utf-8", "utf-8", "none", 1, 1, 1},
        {__LINE__, "\xFF\xFE\xFD\xFF"s, "utf-16le", "utf-16le", "none", 1, 1, 0},
        {__LINE__, utf32 + "\xFD\xFF\0\0\0\0\x11\0"s, "utf-32le", "utf-32le", "none", 3, 1, 1},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.line);
        ScratchFolder const folder;
        folder.Write("text", c.bytes);
        Json const report = Report(folder, {"text"});
        Json const expected = {{"files", 1},
                               {"bytes", c.bytes.size()},
                               {"codeUnits", c.codeUnits},
                               {"lines", c.lines}};
        EXPECT_EQ(report["all"], expected);
        EXPECT_EQ(OnlyGroup(report["encodings"]), c.encoding);
        EXPECT_EQ(report["encodings"][c.encoding], expected);
        EXPECT_EQ(OnlyGroup(report["byteOrderMarks"]), c.mark);
        EXPECT_EQ(OnlyGroup(report["lineEndings"]), c.lineEnding);
        EXPECT_EQ(report["replaced"]["files"], c.replacements > 0 ? 1 : 0);
        EXPECT_EQ(report["replacedFiles"].empty() ? Json(0)
                                                  : report["replacedFiles"][0]["characters"],
                  c.replacements);
    }
}

TEST(TextCensusTest, TableShowsTheSumsOverAFolder)
{
    ScratchFolder const folder;
    folder.Write("texts/long.txt", std::string(1234567, 'x') + "\n");
    folder.Write("texts/deep/below/dos.txt", "\xEF\xBB\xBFone\r\ntwo\r\n");
    folder.Write("texts/binary", "\xFD\xFF\xFF");
    Outcome const outcome = RunProgram(folder.Path(), {"texts"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.out, R"(                       files       bytes   code units   lines
all                        3   1,234,584    1,234,581       4

Encoding
  utf-8                    3   1,234,584    1,234,581       4
  utf-16le                 0
  utf-32le                 0
  iso-8859-1               0

Line ending
  LF                       1   1,234,568    1,234,568       1
  CRLF                     1          13           10       2
  CR                       0
  mixed                    0
  none                     1           3            3       1

Byte-order mark
  utf-8                    1          13           10       2
  utf-16le                 0
  utf-32le                 0
  none                     2   1,234,571    1,234,571       2

Decoding
  replaced bytes           1           3            3       1

Most replaced characters (U+FFFD for bytes that are no text)
         3  texts/binary

Longest lines (code units, place)
 1,234,567  texts/long.txt:1
         3  texts/binary:1
         3  texts/deep/below/dos.txt:1
         3  texts/deep/below/dos.txt:2
)");
}

TEST(TextCensusTest, TheTenLongestLinesAreListed)
{
    ScratchFolder const folder;
    std::string ascending;
    for (int length = 0; length <= 9; ++length) {
        ascending += std::string(length, 'a') + "\r\n";
    }
    folder.Write("a", ascending);
    folder.Write("b", "\xC3\xA9\xC3\xA9\n\n" + std::string(100, 'b') + "\n" + std::string(9, 'b'));
    std::vector<std::string> places;
    Json const report = Report(folder, {"b", "a"});
    for (Json const& line : report["longestLines"]) {
        places.push_back(line["path"].get<std::string>() + ":" + line["line"].dump() + ":" +
                         line["codeUnits"].dump());
    }
    EXPECT_EQ(places, (std::vector<std::string>{"b:3:100", "a:10:9", "b:4:9", "a:9:8", "a:8:7",
                                                "a:7:6", "a:6:5", "a:5:4", "a:4:3", "a:3:2"}));
}

TEST(TextCensusTest, LinksLeadToFilesButNeverInCircles)
{
    ScratchFolder const folder;
    folder.Write("top/inner/file", "text\n");
    fs::create_symlink("inner/file", folder.Path() / "top/link");
    fs::create_directory_symlink("..", folder.Path() / "top/inner/circle");
    fs::create_directory_symlink("top/inner", folder.Path() / "named");

    Json const below = Report(folder, {"top"});
    EXPECT_EQ(below["all"]["files"], 2);
    EXPECT_EQ(below["skipped"], 1);
    EXPECT_EQ(Paths(below["longestLines"]),
              (std::vector<std::string>{"top/inner/file", "top/link"}));

    Json const named = Report(folder, {"named", "top/link"});
    EXPECT_EQ(Paths(named["longestLines"]), (std::vector<std::string>{"named/file", "top/link"}));
}

TEST(TextCensusTest, WhatIsNoFileIsNeverOpened)
{
    ScratchFolder const folder;
    folder.Write("top/file", "text\n");
    ASSERT_EQ(::mkfifo((folder.Path() / "top/pipe").c_str(), 0600), 0);
    fs::create_symlink("pipe", folder.Path() / "top/link to pipe");
    fs::create_symlink("/dev/zero", folder.Path() / "top/link to device");

    // Reading the pipe or the device would never end.
    Json const below = Report(folder, {"top"});
    EXPECT_EQ(below["all"]["files"], 1);
    EXPECT_EQ(below["skipped"], 3);

    Json const named = Report(folder, {"top/pipe", "/dev/zero", "top/file"}, 1);
    EXPECT_EQ(named["all"]["files"], 1);
    EXPECT_EQ(named["skipped"], 0);
    EXPECT_EQ(named["unreadable"],
              Json::parse(R"([{"path": "/dev/zero", "reason": "Not a regular file"},
                              {"path": "top/pipe", "reason": "Not a regular file"}])"));
}

TEST(TextCensusTest, WhatCannotBeReadIsListedAndTheRestCounted)
{
    ScratchFolder const folder;
    folder.Write("top/file", "text\n");
    fs::create_symlink("nowhere", folder.Path() / "top/dangling");
    fs::create_symlink("self", folder.Path() / "top/self");
    Json const report = Report(folder, {"top", "missing"}, 1);
    EXPECT_EQ(report["all"]["files"], 1);
    EXPECT_EQ(Paths(report["unreadable"]),
              (std::vector<std::string>{"missing", "top/dangling", "top/self"}));
    EXPECT_EQ(report["unreadable"][0]["reason"],
              "Unable to open file 'missing': No such file or directory");

    Outcome const table = RunProgram(folder.Path(), {"missing", "top/file"});
    EXPECT_EQ(table.status, 1);
    EXPECT_NE(table.out.find("\nCould not be read (1)\n  missing: Unable to open file 'missing': "
                             "No such file or directory\n"),
              std::string::npos)
        << table.out;
}

TEST(TextCensusTest, FilesWithoutPermissionAreListed)
{
    if (::geteuid() == 0) {
        GTEST_SKIP() << "every file is readable for root";
    }
    ScratchFolder const folder;
    folder.Write("top/file", "text\n");
    folder.Write("top/secret", "text\n");
    folder.Write("top/closed/file", "text\n");
    fs::permissions(folder.Path() / "top/secret", fs::perms::none);
    fs::permissions(folder.Path() / "top/closed", fs::perms::none);
    Json const report = Report(folder, {"top"}, 1);
    fs::permissions(folder.Path() / "top/closed", fs::perms::owner_all);
    EXPECT_EQ(report["all"]["files"], 1);
    EXPECT_EQ(report["unreadable"], Json::parse(R"([{"path": "top/closed",
                               "reason": "Unable to open directory: top/closed"},
                              {"path": "top/secret",
                               "reason": "Unable to open file 'top/secret': Permission denied"}])"));
}

TEST(TextCensusTest, AnyFileNameCanBeShown)
{
    ScratchFolder const folder;
    folder.Write("n/line\nbreak", "1");
    folder.Write("n/quo\"te\\d\t\x1B[31m\x7F", "22");
    folder.Write("n/\u00E9\U0001F600", "333");
    folder.Write("n/not UTF-8\n\xE9\xFF", "4444"); // the text of such a name leads nowhere
    Json const report = Report(folder, {"n"}, 1);
    EXPECT_EQ(Paths(report["longestLines"]),
              (std::vector<std::string>{"n/\u00E9\U0001F600", "n/quo\"te\\d\t\x1B[31m\x7F",
                                        "n/line\nbreak"}));
    EXPECT_EQ(Paths(report["unreadable"]), (std::vector<std::string>{"n/not UTF-8\n\uFFFD\uFFFD"}));

    std::string const table = RunProgram(folder.Path(), {"n"}).out;
    for (char const* shown : {"  n/line\\x0Abreak:1\n", "  n/quo\"te\\d\\x09\\x1B[31m\\x7F:1\n",
                              "  n/not UTF-8\\x0A\uFFFD\uFFFD: Unable to open file "
                              "'n/not UTF-8\\x0A\uFFFD\uFFFD': No such file or directory\n"}) {
        EXPECT_NE(table.find(shown), std::string::npos) << shown << "\n" << table;
    }
}

TEST(TextCensusTest, CommandLinesAreUnderstoodOrRefused)
{
    struct Case
    {
        int line;
        std::vector<std::string> arguments;
        int status;
        std::string error;  ///< How standard error starts.
        std::string output; ///< How standard output starts.
    };
    std::string const help = "usage: textcensus [OPTION]... PATH...\n\n";
    Case const cases[] = {
        {__LINE__, {}, 2, "textcensus: name at least one file or folder\nusage: ", ""},
        {__LINE__, {"--json"}, 2, "textcensus: name at least one", ""},
        {__LINE__, {"--"}, 2, "textcensus: name at least one", ""},
        {__LINE__, {"--jason", "-file"}, 2, "textcensus: unknown option: --jason\nusage: ", ""},
        {__LINE__, {"-file"}, 2, "textcensus: unknown option: -file", ""},
        {__LINE__, {"--50%"}, 2, "textcensus: unknown option: --50%", ""},
        {__LINE__, {"file", "--log-config"}, 2, "textcensus: --log-config needs a file\n", ""},
        {__LINE__, {"--log-config", "", "file"}, 2, "textcensus: --log-config needs a file\n", ""},
        {__LINE__, {"file", "--log"}, 2, "textcensus: --log needs a folder\n", ""},
        {__LINE__, {"file", "--jobs"}, 2, "textcensus: --jobs needs a number from 0 to 256\n", ""},
        {__LINE__, {"--jobs", "257", "file"}, 2, "textcensus: --jobs needs a number from 0", ""},
        {__LINE__, {"--jobs", "file"}, 2, "textcensus: --jobs needs a number from 0", ""},
        {__LINE__, {"--log-config", "file"}, 2, "textcensus: name at least one", ""},
        {__LINE__, {"--help"}, 0, "", help},
        {__LINE__, {"file", "-h"}, 0, "", help},
        {__LINE__, {"--", "-file"}, 0, "", "          "},
        {__LINE__, {"file", "--json"}, 0, "", "{\n"},
        {__LINE__, {""}, 1, "", "          "},
    };
    ScratchFolder const folder;
    folder.Write("file", "text\n");
    folder.Write("-file", "text\n");
    for (Case const& c : cases) {
        SCOPED_TRACE(c.line);
        Outcome const outcome = RunProgram(folder.Path(), c.arguments);
        EXPECT_EQ(outcome.status, c.status);
        EXPECT_EQ(outcome.err.substr(0, c.error.size()), c.error);
        EXPECT_EQ(outcome.out.substr(0, c.output.size()), c.output);
        EXPECT_EQ(c.error.empty(), outcome.err.empty()) << outcome.err;
        EXPECT_EQ(c.output.empty(), outcome.out.empty()) << outcome.out;
    }
}

TEST(TextCensusTest, TheLogHoldsWhatItsOptionsLetThrough)
{
    using Texts = std::vector<std::string>;
    struct Case
    {
        int line;
        Texts options;
        std::string config; ///< What the file "config" holds.
        Texts heads;        ///< Of the lines on standard error.
    };
    Case const cases[] = {
        {__LINE__, {}, "", {}},
        {__LINE__,
         {"--verbose"},
         "",
         {"Info census-started", "Debug folder-listed", "Debug folder-listed", "Info files-listed",
          "Warn excp", "Info worker-finished", "Info files-counted"}},
        {__LINE__,
         {"--log-config", "config"},
         R"({"listFilesTimings": "DEBUG", "Network": "off"})",
         {"Debug folder-listed", "Debug folder-listed", "Warn excp"}},
        {__LINE__,
         {"--log-config", "config", "--verbose"},
         R"({"ListFilesTimings": "off"})",
         {"Info census-started", "Info files-listed", "Warn excp", "Info worker-finished",
          "Info files-counted"}},
        {__LINE__, {"--log-config", "config"}, "", {"Warn excp"}},
        {__LINE__, {"--log-config", "config"}, R"({"Network":)", {"Warn Unable", "Warn excp"}},
        {__LINE__, {"--log-config", "nowhere"}, "", {"Warn Unable", "Warn excp"}},
    };
    ScratchFolder const folder;
    folder.Write("top/file", "a\nb\n");
    folder.Write("top/inner/file", "c\n");
    fs::create_symlink("nowhere", folder.Path() / "top/dangling");
    std::string const report = RunProgram(folder.Path(), {"top"}).out;
    for (Case const& c : cases) {
        SCOPED_TRACE(c.line);
        folder.Write("config", c.config);
        Texts arguments = c.options;
        arguments.push_back("top");
        Outcome const outcome = RunProgram(folder.Path(), arguments);
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.out, report);
        EXPECT_EQ(Heads(outcome.err), c.heads) << outcome.err;
    }
}

TEST(TextCensusTest, ALogThatCannotBeWrittenIsRefused)
{
    ScratchFolder const folder;
    folder.Write("config", R"({"Network": 3})");
    for (auto const& [options, error] :
         {std::pair(
              std::vector<std::string>{"--log-config", "config"},
              "textcensus: config cannot configure the log | Expected a value of type string."),
          {{"--log", "config/below"}, "textcensus: Creating logfile config/below/textcensus_"}}) {
        std::vector<std::string> arguments = options;
        arguments.push_back("config");
        Outcome const outcome = RunProgram(folder.Path(), arguments);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(outcome.err.rfind(error, 0), 0u) << outcome.err;
        EXPECT_NE(outcome.err.find("\nusage: "), std::string::npos) << outcome.err;
    }
}

TEST(TextCensusTest, TheLogFileTellsWhatHappened)
{
    ScratchFolder const folder;
    folder.Write("top/file", "a\nb\n");
    Outcome const outcome = RunProgram(
        folder.Path(), {"--log", "log", "--log-config", LogConfig(), "top", "missing", ""});
    std::string const summary = "textcensus: 9 records logged, 0 lost; to read them:\n  jq -c ";
    EXPECT_EQ(outcome.err.substr(0, summary.size()), summary);

    std::vector<Json> const records = TakeLog(folder);
    struct Case
    {
        char const* severity;
        char const* key;
        char const* values; ///< Members of the record's value.
        char const* error;  ///< The id, empty when there is none.
    };
    Case const cases[] = {
        {"info", "open-log", "{}", ""},
        {"info", "census-started", "{}", ""},
        {"debug", "folder-listed", R"({"path": "top", "entries": "1"})", ""},
        {"info", "files-listed", R"({"files": 3, "skipped": 0, "unreadable": 0})", ""},
        {"warn", "qt", R"({"msg": "QFSFileEngine::open: No file name specified"})", ""},
        {"warn", "excp",
         R"({"path": "", "excp-msg": "Unable to open file '': No file name specified"})",
         "TIOException_AutoGen_0x3DE8E9E4"},
        {"warn", "excp",
         R"({"path": "missing", "msg": "unreadable", "excp-type": "TIO::Exception",
             "excp-msg": "Unable to open file 'missing': No such file or directory"})",
         "TIOException_AutoGen_0x3DE8E9E4"},
        {"trace", "file-counted", R"({"path": "top/file", "bytes": "4"})", ""},
        {"info", "worker-finished", R"({"files": 3})", ""},
        {"info", "files-counted",
         R"({"files": 1, "bytes": 4, "code-units": 4, "lines": 2, "unreadable": 2})", ""},
        {"info", "close-log", "{}", ""},
    };
    ASSERT_EQ(records.size(), std::size(cases)) << Json(records).dump(1);
    for (std::size_t i = 0; i < records.size(); ++i) {
        Case const& c = cases[i];
        Json const& record = records[i];
        SCOPED_TRACE(record);
        EXPECT_EQ(record["sev"], c.severity);
        EXPECT_EQ(record["k"], c.key);
        Json values = record["v"];
        values.merge_patch(Json::parse(c.values));
        EXPECT_EQ(record["v"], values);
        EXPECT_EQ(record.value("/e/excp-error-code"_json_pointer, ""), c.error);
    }
}

TEST(TextCensusTest, TheReportDoesNotDependOnTheNumberOfJobs)
{
    ScratchFolder const folder;
    int const files = 1500; // more than one a batch
    for (int i = 0; i < files; ++i) {
        std::string const name = "top/" + std::to_string(i % 7) + "/" + std::to_string(i);
        // Many lines of the same length, files with as many replacements, some unreadable.
        folder.Write(name, std::string(i % 50, 'x') + (i % 3 == 0 ? "\xFF\r\n" : "\n"));
        if (i % 100 == 0) {
            fs::create_symlink("nowhere", folder.Path() / (name + "-link"));
        }
    }
    std::vector<std::string> const replaced =
        Paths(Report(folder, {"--jobs", "4", "top"}, 1)["replacedFiles"]);
    EXPECT_EQ(replaced.size(), std::size_t(files / 3));
    EXPECT_TRUE(std::is_sorted(replaced.begin(), replaced.end()));
    for (std::string const format : {"--json", "--"}) { // "--": the table
        Outcome const one = RunProgram(folder.Path(), {"--jobs", "1", format, "top"});
        EXPECT_GT(one.out.size(), 1000u) << one.err;
        for (char const* jobs : {"4", "0"}) {
            Outcome const other = RunProgram(folder.Path(), {"--jobs", jobs, format, "top"});
            EXPECT_EQ(other.out, one.out) << jobs;
            EXPECT_EQ(other.status, one.status);
        }
    }

    RunProgram(folder.Path(), {"--jobs", "4", "--log", "log", "top"});
    std::map<std::string, std::string> workers; // by session
    int counted = 0;
    for (Json const& record : TakeLog(folder)) {
        if (record.contains("ctx")) {
            EXPECT_EQ(record["ctx"]["roots"], "top");
            auto const worker = workers.emplace(record["sess"], record["ctx"]["worker"]).first;
            EXPECT_EQ(worker->second, record["ctx"]["worker"]);
            counted += record["k"] == "worker-finished" ? record["v"]["files"].get<int>() : 0;
        } else {
            EXPECT_EQ(record["sess"], "-") << record;
            EXPECT_NE(record["k"], "excp");
        }
    }
    std::set<std::string> numbers;
    for (auto const& [session, worker] : workers) {
        numbers.insert(worker);
    }
    EXPECT_EQ(workers.size(), 4u);
    EXPECT_EQ(numbers, (std::set<std::string>{"1", "2", "3", "4"}));
    EXPECT_EQ(counted, files + files / 100);
}

TEST(TextCensusTest, AReportThatCannotBeWrittenIsAFailure)
{
    ScratchFolder const folder;
    folder.Write("file", "text\n");
    std::string const complaint = "textcensus: the report could not be written: ";
    struct Case
    {
        int line;
        Stdout out;
        std::string error;
    };
    std::vector<Case> cases = {{__LINE__, Stdout::Closed, complaint + "Bad file descriptor\n"},
                               {__LINE__, Stdout::BrokenPipe, ""}};
    if (fs::exists("/dev/full")) {
        cases.push_back({__LINE__, Stdout::FullDevice, complaint + "No space left on device\n"});
    }
    for (Case const& c : cases) {
        SCOPED_TRACE(c.line);
        for (std::vector<std::string> const& arguments :
             {std::vector<std::string>{"file"}, {"--json", "file"}, {"--help"}}) {
            Outcome const outcome = RunProgram(folder.Path(), arguments, c.out);
            EXPECT_EQ(outcome.status, 1) << arguments[0];
            EXPECT_EQ(outcome.err, c.error) << arguments[0];
        }
    }
}

TEST(TextCensusTest, TheProgressBarLeavesNothingBehind)
{
    ScratchFolder const folder;
    folder.Write("top/file", "text\n");
    Outcome const outcome = RunProgram(folder.Path(), {"top"}, Stdout::Captured, Stderr::Terminal);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_NE(outcome.err.find("] 0 of 1 files, 0 MiB"), std::string::npos) << outcome.err;

    // What a terminal of endless width would show in the end.
    std::string line;
    std::size_t column = 0;
    for (char const c : outcome.err) {
        ASSERT_NE(c, '\n');
        if (c == '\r') {
            column = 0;
            continue;
        }
        line.resize(std::max(line.size(), column + 1), ' ');
        line[column++] = c;
    }
    EXPECT_EQ(column, 0u);
    EXPECT_EQ(line.find_first_not_of(' '), std::string::npos) << line;
}

} // namespace
