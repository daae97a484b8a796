#include "ProgramRun.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <regex>
#include <set>
#include <sstream>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;
using Texts = std::vector<std::string>;
using namespace std::string_literals;

/// The report on `arguments`; fails the test when it is not JSON.
Json Report(TemporaryFolder const& folder, Texts arguments, int expectedStatus = 0)
{
    arguments.insert(arguments.begin(), "--json");
    Outcome const outcome = RunProgram(folder, arguments);
    EXPECT_EQ(outcome.status, expectedStatus) << outcome.err;
    Json report = Json::parse(outcome.out, nullptr, false);
    EXPECT_TRUE(report.is_object()) << outcome.out;
    return report;
}

/// The name of the only group with files in it, and a blank.
std::string OnlyGroup(Json const& groups)
{
    std::string names;
    for (auto const& [name, counts] : groups.items()) {
        names += counts["files"] != 0 ? name + ' ' : "";
    }
    return names;
}

Texts Paths(Json const& list)
{
    Texts paths;
    for (Json const& item : list) {
        paths.push_back(item["path"]);
    }
    return paths;
}

/// The records of the only log in the folder "log".
std::vector<Json> ReadLog(TemporaryFolder const& folder)
{
    std::vector<Json> records;
    std::ifstream file(fs::directory_iterator(folder.Native("log"))->path());
    for (std::string line; std::getline(file, line);) {
        records.push_back(Json::parse(line));
    }
    return records;
}

/// The severity and the key of each line for people, "Warn excp|".
std::string Heads(std::string const& lines)
{
    std::string heads;
    std::istringstream stream(lines);
    for (std::string line, time, severity, key; std::getline(stream, line);) {
        std::istringstream(line) >> time >> severity >> key;
        heads += severity + ' ' + key + '|';
    }
    return heads;
}

TEST(TextCensusTest, EachKindOfTextIsToldApart)
{
    struct Case
    {
        std::string bytes;
        std::string kind; ///< Encoding, mark, line ending, code units, lines, replacements.
    };
    std::string const utf32 = "\xFF\xFE\0\0A\0\0\0"s;
    Case const cases[] = {
        {"", "utf-8 none none 0 0 0"},
        {"a", "utf-8 none none 1 1 0"},
        {"a\n\nb", "utf-8 none LF 4 3 0"},
        {"a\r\nb\r\n", "utf-8 none CRLF 6 2 0"},
        {"a\rb", "utf-8 none CR 3 2 0"},
        {"a\r", "utf-8 none CR 2 1 0"},
        {"\n\r", "utf-8 none mixed 2 2 0"},
        {"\r\r\n", "utf-8 none mixed 3 2 0"},
        // One unit, two units; a mark is none.
        {"\xC3\xA9\xF0\x9F\x98\x80", "utf-8 none none 3 1 0"},
        {"\xEF\xBB\xBF", "utf-8 utf-8 none 0 0 0"},
        {"\xFF\xFE\xE9\0\n\0"s, "utf-16le utf-16le LF 2 1 0"},
        {"<\0?\0x\0m\0l\0 \0"s, "utf-16le none none 6 1 0"},
        {utf32 + "\r\0\0\0\n\0\0\0"s, "utf-32le utf-32le CRLF 3 1 0"},
        {"<?xml encoding='ISO-8859-1'?>\xE9\xFF", "iso-8859-1 none none 31 1 0"},
        // Zeros are characters wherever they stand.
        {"a\0b\nc\0\0"s, "utf-8 none LF 7 2 0"},
        {"\xFF\xFE\0\0"s, "utf-32le utf-32le none 0 0 0"},
        {"\xFF\xFE\x61\0\0\0"s, "utf-16le utf-16le none 2 1 0"},
        {utf32 + "\0\0\0\0"s, "utf-32le utf-32le none 2 1 0"},
        // What the bytes spell is not a replacement; what they do not is.
        {"\xEF\xBF\xBD\xE9", "utf-8 none none 2 1 1"},
        {"\xFF\x61\xFF\n", "utf-8 none LF 4 1 2"},
        {"\xEF\xBB\xBF\xEF\xBF", "utf-8 utf-8 none 1 1 1"},
        {"\xFF\xFE\xFD\xFF"s, "utf-16le utf-16le none 1 1 0"},
        {utf32 + "\xFD\xFF\0\0\0\0\x11\0"s, "utf-32le utf-32le none 3 1 1"},
    };
    for (Case const& c : cases) {
        TemporaryFolder const folder;
        folder.Write("text", c.bytes);
        Json const report = Report(folder, {"text"});
        Json const& all = report["all"];
        EXPECT_EQ(OnlyGroup(report["encodings"]) + OnlyGroup(report["byteOrderMarks"]) +
                      OnlyGroup(report["lineEndings"]) + all["codeUnits"].dump() + ' ' +
                      all["lines"].dump() + ' ' +
                      report.value("/replacedFiles/0/characters"_json_pointer, Json(0)).dump(),
                  c.kind)
            << testing::PrintToString(c.bytes);
        EXPECT_EQ(all["bytes"], c.bytes.size());
    }
}

TEST(TextCensusTest, TableShowsTheSumsOverAFolder)
{
    TemporaryFolder const folder;
    folder.Write("texts/long.txt", std::string(1234567, 'x') + "\n");
    folder.Write("texts/deep/below/dos.txt", "\xEF\xBB\xBFone\r\ntwo\r\n");
    folder.Write("texts/binary", "\xFD\xFF\xFF");
    Outcome const outcome = RunProgram(folder, {"texts"});
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
    TemporaryFolder const folder;
    std::string ascending;
    for (int length = 0; length <= 9; ++length) {
        ascending += std::string(length, 'a') + "\r\n";
    }
    folder.Write("a", ascending);
    folder.Write("b", "\xC3\xA9\xC3\xA9\n\n" + std::string(100, 'b') + "\n" + std::string(9, 'b'));
    Texts places;
    Json const report = Report(folder, {"b", "a"});
    for (Json const& line : report["longestLines"]) {
        places.push_back(line["path"].get<std::string>() + ":" + line["line"].dump() + ":" +
                         line["codeUnits"].dump());
    }
    EXPECT_EQ(places, (Texts{"b:3:100", "a:10:9", "b:4:9", "a:9:8", "a:8:7", "a:7:6", "a:6:5",
                             "a:5:4", "a:4:3", "a:3:2"}));
}

TEST(TextCensusTest, LinksLeadToFilesButNeverInCircles)
{
    TemporaryFolder const folder;
    folder.Write("top/inner/file", "text\n");
    fs::create_symlink("inner/file", folder.Native("top/link"));
    fs::create_directory_symlink("..", folder.Native("top/inner/circle"));
    fs::create_directory_symlink("top/inner", folder.Native("named"));

    Json const below = Report(folder, {"top"});
    EXPECT_EQ(below["skipped"], 1);
    EXPECT_EQ(Paths(below["longestLines"]), (Texts{"top/inner/file", "top/link"}));
    EXPECT_EQ(Paths(Report(folder, {"named", "top/link"})["longestLines"]),
              (Texts{"named/file", "top/link"}));
}

TEST(TextCensusTest, WhatIsNoFileIsNeverOpened)
{
    TemporaryFolder const folder;
    folder.Write("top/file", "text\n");
    ASSERT_EQ(::mkfifo(folder.Native("top/pipe").c_str(), 0600), 0);
    fs::create_symlink("pipe", folder.Native("top/link to pipe"));
    fs::create_symlink("/dev/zero", folder.Native("top/link to device"));

    // Reading the pipe or the device would never end.
    Json const below = Report(folder, {"top"});
    EXPECT_EQ(below["all"]["files"], 1);
    EXPECT_EQ(below["skipped"], 3);
    EXPECT_EQ(Report(folder, {"top/pipe", "/dev/zero", "top/file"}, 1)["unreadable"],
              Json::parse(R"([{"path": "/dev/zero", "reason": "Not a regular file"},
                              {"path": "top/pipe", "reason": "Not a regular file"}])"));
}

TEST(TextCensusTest, WhatCannotBeReadIsListedAndTheRestCounted)
{
    bool const isRoot = ::geteuid() == 0; // every file is readable for root
    TemporaryFolder const folder;
    folder.Write("top/file", "text\n");
    fs::create_symlink("nowhere", folder.Native("top/dangling"));
    fs::create_symlink("self", folder.Native("top/self"));
    if (!isRoot) {
        folder.Write("top/secret", "text\n");
        folder.Write("top/closed/file", "text\n");
        fs::permissions(folder.Native("top/secret"), fs::perms::none);
        fs::permissions(folder.Native("top/closed"), fs::perms::none);
    }
    std::string const table = RunProgram(folder, {"top", "missing"}).out;
    std::string const expected =
        "\nCould not be read (" + std::string(isRoot ? "3" : "5") + ")\n" +
        "  missing: Unable to open file 'missing': No such file or directory\n" +
        (isRoot ? "" : "  top/closed: Unable to open directory: top/closed\n") +
        "  top/dangling: Unable to open file 'top/dangling': No such file or directory\n" +
        (isRoot ? "" : "  top/secret: Unable to open file 'top/secret': Permission denied\n") +
        "  top/self: Unable to open file 'top/self': Too many levels of symbolic links\n";
    EXPECT_NE(table.find(expected), std::string::npos) << table;
    EXPECT_NE(table.find("all                        1 "), std::string::npos) << table;
    if (!isRoot) {
        fs::permissions(folder.Native("top/closed"), fs::perms::owner_all);
    }
}

TEST(TextCensusTest, AnyFileNameCanBeShown)
{
    TemporaryFolder const folder;
    folder.Write("n/line\nbreak", "1");
    folder.Write("n/quo\"te\\d\t\x1B[31m\x7F", "22");
    folder.Write("n/\u00E9\U0001F600", "333");
    folder.Write("n/not UTF-8\n\xE9\xFF", "4444"); // the text of such a name leads nowhere
    Json const report = Report(folder, {"n"}, 1);
    EXPECT_EQ(Paths(report["longestLines"]),
              (Texts{"n/\u00E9\U0001F600", "n/quo\"te\\d\t\x1B[31m\x7F", "n/line\nbreak"}));
    EXPECT_EQ(Paths(report["unreadable"]), (Texts{"n/not UTF-8\n\uFFFD\uFFFD"}));

    std::string const table = RunProgram(folder, {"n"}).out;
    for (char const* shown : {"  n/line\\x0Abreak:1\n", "  n/quo\"te\\d\\x09\\x1B[31m\\x7F:1\n",
                              "  n/not UTF-8\\x0A\uFFFD\uFFFD: Unable to open file "
                              "'n/not UTF-8\\x0A\uFFFD\uFFFD': No such file or directory\n"}) {
        EXPECT_NE(table.find(shown), std::string::npos) << shown << "\n" << table;
    }
}

TEST(TextCensusTest, CommandLinesAreUnderstoodOrRefused)
{
    std::string const help = "usage: textcensus [OPTION]... PATH...\n\n";
    std::string const badConfig =
        "textcensus: config cannot configure the log | Expected a value of type string.\n";
    struct
    {
        Texts arguments;
        int status;
        std::string error;  ///< How standard error starts.
        std::string output; ///< How standard output starts.
    } const cases[] = {
        {{}, 2, "textcensus: name at least one file or folder\nusage: ", ""},
        {{"--json"}, 2, "textcensus: name at least one", ""},
        {{"--jason", "-file"}, 2, "textcensus: unknown option: --jason\nusage: ", ""},
        {{"--50%"}, 2, "textcensus: unknown option: --50%", ""},
        {{"file", "--log-config"}, 2, "textcensus: --log-config needs a file\n", ""},
        {{"--log-config", "", "file"}, 2, "textcensus: --log-config needs a file\n", ""},
        {{"file", "--log"}, 2, "textcensus: --log needs a folder\n", ""},
        {{"file", "--jobs"}, 2, "textcensus: --jobs needs a number from 0 to 256\n", ""},
        {{"--jobs", "257", "file"}, 2, "textcensus: --jobs needs a number from 0", ""},
        {{"--jobs", "file"}, 2, "textcensus: --jobs needs a number from 0", ""},
        {{"--log-config", "config", "file"}, 2, badConfig, ""},
        {{"--log", "file/below", "file"}, 2, "textcensus: Creating logfile file/below/", ""},
        {{"--help"}, 0, "", help},
        {{"file", "-h"}, 0, "", help},
        {{"--", "-file"}, 0, "", "          "},
        {{"file", "--json"}, 0, "", "{\n"},
        {{""}, 1, "", "          "},
    };
    TemporaryFolder const folder;
    folder.Write("file", "text\n");
    folder.Write("-file", "text\n");
    folder.Write("config", R"({"Network": 3})");
    for (auto const& c : cases) {
        Outcome const outcome = RunProgram(folder, c.arguments);
        SCOPED_TRACE(Json(c.arguments));
        EXPECT_EQ(outcome.status, c.status);
        EXPECT_EQ(outcome.err.substr(0, c.error.size()), c.error);
        EXPECT_EQ(outcome.out.substr(0, c.output.size()), c.output);
        EXPECT_EQ(c.error.empty(), outcome.err.empty()) << outcome.err;
        EXPECT_EQ(c.output.empty(), outcome.out.empty()) << outcome.out;
    }
}

TEST(TextCensusTest, TheLogHoldsWhatItsOptionsLetThrough)
{
    std::string const timings = R"({"listFilesTimings": "DEBUG", "Network": "off"})";
    std::string const all =
        "Info census-started|Info machine|Debug folder-listed|Debug folder-listed|"
        "Info files-listed|Warn excp|Info worker-finished|Info files-counted|";
    struct
    {
        Texts options;
        std::string config; ///< What the file "config" holds.
        std::string heads;  ///< Of the lines on standard error.
    } const cases[] = {
        {{}, "", ""},
        {{"--verbose"}, "", all},
        {{"--log-config", "config"}, timings, "Debug folder-listed|Debug folder-listed|Warn excp|"},
        {{"--log-config", "config", "--verbose"},
         R"({"ListFilesTimings": "off"})",
         std::regex_replace(all, std::regex("Debug[^|]*."), "")},
        {{"--log-config", "config"}, "", "Warn excp|"},
        {{"--log-config", "config"}, R"({"Network":)", "Warn Unable|Warn excp|"},
        {{"--log-config", "nowhere"}, "", "Warn Unable|Warn excp|"},
    };
    TemporaryFolder const folder;
    folder.Write("top/file", "a\nb\n");
    folder.Write("top/inner/file", "c\n");
    fs::create_symlink("nowhere", folder.Native("top/dangling"));
    std::string const report = RunProgram(folder, {"top"}).out;
    for (auto const& c : cases) {
        folder.Write("config", c.config);
        Texts arguments = c.options;
        arguments.push_back("top");
        Outcome const outcome = RunProgram(folder, arguments);
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.out, report);
        EXPECT_EQ(Heads(outcome.err), c.heads) << outcome.err;
    }
}

TEST(TextCensusTest, FilesAreComparedWithWhatFileSays)
{
    TemporaryFolder const folder;
    folder.Write("top/-", "stands for itself");
    folder.Write("top/ascii", "text\n");
    folder.Write("top/binary", "\0\1\2\377"s);
    folder.Write("top/utf-8", "Zo\u00EB\n");
    folder.Write("top/utf-16le", "\xFF\xFET\0e\0x\0t\0\n\0"s);
    fs::create_symlink("nowhere", folder.Native("top/unreadable"));
    Texts const options = {"--compare-with-file", "--log", "log", "--verbose", "top"};
    Json const found = Report(folder, options, 1)["comparedWithFile"];
    EXPECT_EQ(found, Json::parse(R"({"files": 5, "agreed": 4, "problem": "", "differences": [
        {"ours": "utf-8", "theirs": "binary", "files": 1, "example": "top/binary"}]})"));
    EXPECT_NE(RunProgram(folder, options).out.find("         1  utf-8, file: binary (top/binary)"),
              std::string::npos);

    std::string const path = std::getenv("PATH");
    ::setenv("PATH", "/nowhere", 1);
    Json const without = Report(folder, options, 1)["comparedWithFile"];
    ::setenv("PATH", path.c_str(), 1);
    EXPECT_EQ(without["files"], 0);
    EXPECT_EQ(without["problem"], "file could not be started: No such file or directory");
}

TEST(TextCensusTest, TheLastPathsCanBeCountedAgain)
{
    TemporaryFolder const folder;
    folder.Write("a, b/file", "text");
    ::setenv("XDG_CONFIG_HOME", folder.Native("settings").c_str(), 1);
    Outcome const before = RunProgram(folder, {"--again"});
    Json const first = Report(folder, {"a, b"});
    Json const again = Report(TemporaryFolder(), {"--again"});
    ::unsetenv("XDG_CONFIG_HOME");
    EXPECT_EQ(before.status, 2);
    EXPECT_EQ(before.err.substr(0, 35), "textcensus: there was no run before");
    EXPECT_EQ(again["all"], first["all"]);
    EXPECT_EQ(RunProgram(folder, {"--again", "a, b"}).status, 2);
}

TEST(TextCensusTest, TheLogFileTellsWhatHappened)
{
    TemporaryFolder const folder;
    folder.Write("top/file", "a\nb\n");
    std::string const config = fs::path(__FILE__).parent_path().parent_path() / "log-config.json";
    Outcome const outcome =
        RunProgram(folder, {"--log", "log", "--log-config", config, "top", "missing", ""});
    std::string const summary = "textcensus: 10 records logged, 0 lost; to read them:\n  jq -c ";
    EXPECT_EQ(outcome.err.substr(0, summary.size()), summary);

    std::vector<Json> const records = ReadLog(folder);
    struct
    {
        std::string head;
        Json values;       ///< Members of the record's value.
        std::string error; ///< The id, empty when there is none.
    } const cases[] = {
        {"info open-log", {}, ""},
        {"info census-started", {}, ""},
        {"info machine", {{"architecture", "posix"}}, ""},
        {"debug folder-listed", {{"path", "top"}, {"entries", "1"}}, ""},
        {"info files-listed", {{"files", 3}, {"skipped", 0}, {"unreadable", 0}}, ""},
        {"warn qt", {{"msg", "QFSFileEngine::open: No file name specified"}}, ""},
        {"warn excp",
         {{"path", ""}, {"excp-msg", "Unable to open file '': No file name specified"}},
         "TIOException_AutoGen_0x3DE8E9E4"},
        {"warn excp",
         {{"path", "missing"}, {"msg", "unreadable"}, {"excp-type", "TIO::Exception"}},
         "TIOException_AutoGen_0x3DE8E9E4"},
        {"trace file-counted", {{"path", "top/file"}, {"bytes", "4"}}, ""},
        {"info worker-finished", {{"files", 3}}, ""},
        {"info files-counted",
         {{"files", 1}, {"bytes", 4}, {"code-units", 4}, {"lines", 2}, {"unreadable", 2}},
         ""},
        {"info close-log", {}, ""},
    };
    ASSERT_EQ(records.size(), std::size(cases)) << Json(records).dump(1);
    for (std::size_t i = 0; i < records.size(); ++i) {
        Json const& record = records[i];
        SCOPED_TRACE(record);
        EXPECT_EQ(record.value("sev", "") + ' ' + record.value("k", ""), cases[i].head);
        for (auto const& [name, value] : cases[i].values.items()) {
            EXPECT_EQ(record["v"][name], value);
        }
        EXPECT_EQ(record.value("/e/excp-error-code"_json_pointer, ""), cases[i].error);
    }
}

TEST(TextCensusTest, TheReportDoesNotDependOnTheNumberOfJobs)
{
    TemporaryFolder const folder;
    int const files = 1500; // more than one a batch
    for (int i = 0; i < files; ++i) {
        std::string const name = "top/" + std::to_string(i % 7) + "/" + std::to_string(i);
        // Many lines of the same length, files with as many replacements, some unreadable.
        folder.Write(name, std::string(i % 50, 'x') + (i % 3 == 0 ? "\xFF\r\n" : "\n"));
        if (i % 100 == 0) {
            fs::create_symlink("nowhere", folder.Native(name + "-link"));
        }
    }
    Texts const replaced = Paths(Report(folder, {"--jobs", "4", "top"}, 1)["replacedFiles"]);
    EXPECT_EQ(replaced.size(), std::size_t(files / 3));
    EXPECT_TRUE(std::is_sorted(replaced.begin(), replaced.end()));
    for (std::string const format : {"--json", "--"}) { // "--": the table
        Outcome const one = RunProgram(folder, {"--jobs", "1", format, "top"});
        EXPECT_GT(one.out.size(), 1000u) << one.err;
        for (char const* jobs : {"4", "0"}) {
            Outcome const other = RunProgram(folder, {"--jobs", jobs, format, "top"});
            EXPECT_EQ(other.out, one.out) << jobs;
            EXPECT_EQ(other.status, one.status);
        }
    }

    RunProgram(folder, {"--jobs", "4", "--log", "log", "top"});
    std::set<std::pair<std::string, std::string>> workers; // with their sessions
    std::set<std::string> sessions;
    int counted = 0;
    for (Json const& record : ReadLog(folder)) {
        if (record.contains("ctx")) {
            EXPECT_EQ(record["ctx"]["roots"], "top");
            workers.emplace(record["ctx"]["worker"], record["sess"]);
            sessions.insert(record["sess"]);
            counted += record["k"] == "worker-finished" ? record["v"]["files"].get<int>() : 0;
        } else {
            EXPECT_EQ(record["sess"], "-") << record;
            EXPECT_NE(record["k"], "excp");
        }
    }
    std::string names;
    for (auto const& [worker, session] : workers) {
        names += worker;
    }
    EXPECT_EQ(names, "1234"); // each has one session
    EXPECT_EQ(sessions.size(), 4u);
    EXPECT_EQ(counted, files + files / 100);
}

TEST(TextCensusTest, AReportThatCannotBeWrittenIsAFailure)
{
    TemporaryFolder const folder;
    folder.Write("file", "text\n");
    ASSERT_EQ(::mkfifo(folder.Native("pipe").c_str(), 0600), 0);
    std::string const complaint = "textcensus: the report could not be written: ";
    std::vector<std::pair<std::string, std::string>> cases = {
        {">&-", complaint + "Bad file descriptor\n"},
        {"4<>pipe 5>pipe 4>&- >&5", ""}, // which nobody reads
    };
    if (fs::exists("/dev/full")) {
        cases.emplace_back(">/dev/full", complaint + "No space left on device\n");
    }
    for (auto const& [redirections, error] : cases) {
        for (Texts const& arguments : {Texts{"file"}, {"--json", "file"}, {"--help"}}) {
            Outcome const outcome = RunProgram(folder, arguments, redirections);
            EXPECT_EQ(outcome.status, 1) << redirections << ' ' << arguments[0];
            EXPECT_EQ(outcome.err, error) << arguments[0];
        }
    }
}

TEST(TextCensusTest, TheProgressBarLeavesNothingBehind)
{
    TemporaryFolder const folder;
    folder.Write("top/file", "text\n");
    int const master = ::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK);
    ASSERT_EQ(::grantpt(master) + ::unlockpt(master), 0);
    int const terminal = ::open(::ptsname(master), O_RDWR | O_NOCTTY);
    EXPECT_EQ(RunProgram(folder, {"top"}, std::string("2>") + ::ptsname(master)).status, 0);
    char shown[4096];
    std::string const bytes(shown, static_cast<std::size_t>(::read(master, shown, sizeof(shown))));
    ::close(terminal);
    ::close(master);
    EXPECT_NE(bytes.find("] 0 of 1 files, 0 MiB"), std::string::npos) << bytes;

    // What a terminal of endless width would show in the end.
    std::string line;
    std::size_t column = 0;
    for (char const c : bytes) {
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
