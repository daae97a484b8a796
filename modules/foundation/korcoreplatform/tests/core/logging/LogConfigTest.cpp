#include "korcoreplatform/main/core/logging/LogConfig.h"

#include "korcoreplatform/tests/support/KorTest.h"
#include "korcoreplatform/tests/support/RecordingLogger.h"
#include "korcoreplatform/tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace {

using LogDetail::Network;
using TLog::Severity;

constexpr char kNotAString[] = "KorvelException_AutoGen_0x1A36D05F";
constexpr char kUnreadableFile[] = "Warn: Unable to read native logging configuration file.";
constexpr char kNotJson[] = "Warn: Unable to read log configuration file.";

/// What the settings log as their problems.
std::vector<std::string> ProblemsOf(LogConfigSettings& settings)
{
    LogRecording const log;
    settings.LogStartupProblems();
    return log.Lines();
}

std::string Nested(int depth)
{
    return R"({"Network":"Warn","Memory":)" + std::string(depth, '[') + std::string(depth, ']') +
           '}';
}

TEST(LogConfigTest, AFileGivesThresholdsOrAProblem)
{
    struct Case
    {
        int line;
        std::string text;
        LogDetail::LogDetailEnums category;
        std::optional<Severity> threshold;
        std::vector<std::string> problems = {};
    };
    Case const cases[] = {
        {__LINE__, R"({"network":"WARN"})", Network, Severity::Warn},
        {__LINE__, "\xEF\xBB\xBF{\"Network\":\"trace\"}", Network, Severity::Trace},
        {__LINE__, R"({"\u004eetwork":"Info"})", Network, Severity::Info},
        {__LINE__, R"({"Network":"Error","NETWORK":"Info"})", Network, Severity::Error},
        {__LINE__, R"({"Network":"LogDetail"})", Network, Severity::LogDetail},
        {__LINE__, R"({"Network":"loud"})", Network, Severity::Off},
        {__LINE__, R"({"Internet":"Info"})", LogDetail::Count, Severity::Info},
        {__LINE__, "{\"Memory\xFF\":\"Info\"}", LogDetail::Count, Severity::Info},
        {__LINE__, "{}", Network, std::nullopt},
        {__LINE__, "", Network, std::nullopt},
        {__LINE__, " \n", Network, std::nullopt, {kNotJson}},
        {__LINE__, R"(["Network"])", Network, std::nullopt, {kNotJson}},
        {__LINE__, R"("Network")", Network, std::nullopt, {kNotJson}},
        {__LINE__, R"({"Network":"Warn")", Network, std::nullopt, {kNotJson}},
        {__LINE__, R"({"Network":"Warn"} {})", Network, std::nullopt, {kNotJson}},
        {__LINE__, R"({"Network":"Warn",})", Network, std::nullopt, {kNotJson}},
        {__LINE__, R"({"Network":"Warn","\ud800":"Warn"})", Network, std::nullopt, {kNotJson}},
        {__LINE__, Nested(10000), Network, std::nullopt, {kNotJson}},
    };
    TemporaryFolder const folder;
    for (Case const& c : cases) {
        SCOPED_TRACE(c.line);
        folder.Write("\u00FC.json", c.text);
        LogConfigSettings settings(folder / u"\u00FC.json");
        EXPECT_EQ(settings.IsDetailSet(c.category), c.threshold.has_value());
        EXPECT_EQ(settings.GetDetailSeverity(c.category), c.threshold.value_or(Severity::Off));
        EXPECT_EQ(settings.DetailAcceptsSeverity(c.category, Severity::Fatal),
                  c.threshold <= Severity::Fatal && c.threshold);
        EXPECT_EQ(ProblemsOf(settings), c.problems);
        EXPECT_EQ(ProblemsOf(settings), c.problems) << "a problem stays";
    }
}

TEST(LogConfigTest, AFileThatCannotBeReadIsAProblem)
{
    TemporaryFolder const folder;
    for (TPath const& path : {folder / u"missing.json", folder.Path()}) {
        LogConfigSettings settings(path);
        EXPECT_EQ(ProblemsOf(settings), std::vector<std::string>{kUnreadableFile});
    }
    LogConfigSettings none{TPath()};
    EXPECT_TRUE(ProblemsOf(none).empty());
}

TEST(LogConfigTest, AValueThatIsNotAStringIsAnErrorAndChangesNothing)
{
    LogConfigSettings settings{TPath()};
    settings.SetDetailSeverity(LogDetail::Memory, Severity::Info);
    for (std::string const& text :
         {std::string(R"({"Network":3})"), std::string(R"({"Network":"Warn","Memory":null})"),
          Nested(1000)}) {
        EXPECT_KOR_ERROR(settings.InitializeFromString(text.c_str()), KorvelException, kNotAString);
        EXPECT_FALSE(settings.IsDetailSet(Network));
        EXPECT_EQ(settings.GetDetailSeverity(LogDetail::Memory), Severity::Info);
    }
    TemporaryFolder const folder;
    folder.Write("bad.json", R"({"Network":3})");
    try {
        LogConfig::CreateLogConfig(folder / u"bad.json");
        FAIL();
    } catch (KorvelException const& e) {
        EXPECT_STREQ(e.what(), "Expected a value of type string.");
    }
}

TEST(LogConfigTest, ATextReplacesAllThresholdsOrNone)
{
    constexpr auto kUnlisted = static_cast<LogDetail::LogDetailEnums>(-1);
    LogConfigSettings settings{TPath()};
    settings.SetDetailSeverity(LogDetail::Memory, Severity::Info);
    settings.SetDetailSeverity(kUnlisted, Severity::Debug);
    for (char16_t const* text : {u"", u"[]"}) {
        settings.InitializeFromString(text);
        EXPECT_EQ(settings.GetDetailSeverity(LogDetail::Memory), Severity::Info);
        EXPECT_EQ(settings.GetDetailSeverity(kUnlisted), Severity::Debug);
    }
    settings.InitializeFromString(u"{\"Network\":\"Info\"}");
    EXPECT_TRUE(settings.IsDetailSet(Network));
    EXPECT_FALSE(settings.IsDetailSet(LogDetail::Memory));
    EXPECT_FALSE(settings.IsDetailSet(kUnlisted));
}

} // namespace
