#include "korcoreplatform/main/core/logging/LogConfig.h"

#include "korcoreplatform/tests/support/RecordingLogger.h"
#include "korcoreplatform/tests/support/TemporaryFolder.h"

namespace {

using LogDetail::Network;
using TLog::Severity;
using namespace std::string_literals;
using Lines = std::vector<std::string>;

constexpr char kNotAString[] = "KorvelException_AutoGen_0x1A36D05F";
constexpr char kNotJson[] = "Warn: Unable to read log configuration file.";

/// What the settings log as their problems.
Lines ProblemsOf(LogConfigSettings& settings)
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
    std::tuple<std::string, LogDetail::LogDetailEnums, std::optional<Severity>, Lines> const
        cases[] = {
            {"\xEF\xBB\xBF{\"Network\":\"trace\"}", Network, Severity::Trace, {}},
            {R"({"Network":"LogDetail"})", Network, Severity::LogDetail, {}},
            {R"({"Network":"loud"})", Network, Severity::Off, {}},
            {R"({"Internet":"Info"})", LogDetail::Count, Severity::Info, {}},
            {"{\"Memory\xFF\":\"Info\"}", LogDetail::Count, Severity::Info, {}},
            {"{}", Network, std::nullopt, {}},
            {"", Network, std::nullopt, {}},
            {" \n", Network, std::nullopt, {kNotJson}},
            {R"(["Network"])", Network, std::nullopt, {kNotJson}},
            {R"({"Network":"Warn")", Network, std::nullopt, {kNotJson}},
            {R"({"Network":"Warn","\ud800":"Warn"})", Network, std::nullopt, {kNotJson}},
            {Nested(10000), Network, std::nullopt, {kNotJson}},
        };
    TemporaryFolder const folder;
    for (auto const& [text, category, threshold, problems] : cases) {
        SCOPED_TRACE(text.substr(0, 80));
        folder.Write("\u00FC.json", text);
        LogConfigSettings settings(folder / u"\u00FC.json");
        EXPECT_EQ(settings.IsDetailSet(category), threshold.has_value());
        EXPECT_EQ(settings.GetDetailSeverity(category), threshold.value_or(Severity::Off));
        EXPECT_EQ(settings.DetailAcceptsSeverity(category, Severity::Fatal),
                  threshold <= Severity::Fatal && threshold);
        EXPECT_EQ(ProblemsOf(settings), problems);
        EXPECT_EQ(ProblemsOf(settings), problems) << "a problem stays";
    }
}

TEST(LogConfigTest, AFileThatCannotBeReadIsAProblem)
{
    TemporaryFolder const folder;
    for (TPath const& path : {folder / u"missing.json", folder.Path()}) {
        LogConfigSettings settings(path);
        EXPECT_EQ(ProblemsOf(settings),
                  Lines{"Warn: Unable to read native logging configuration file."});
    }
}

TEST(LogConfigTest, AValueThatIsNotAStringIsAnErrorAndChangesNothing)
{
    TemporaryFolder const folder;
    LogConfigSettings settings{TPath()};
    EXPECT_EQ(ProblemsOf(settings), Lines());
    settings.SetDetailSeverity(LogDetail::Memory, Severity::Info);
    for (std::string const& text :
         {R"({"Network":3})"s, R"({"Network":"Warn","Memory":null})"s, Nested(1000)}) {
        EXPECT_KOR_ERROR(settings.InitializeFromString(text.c_str()), KorvelException, kNotAString);
        EXPECT_FALSE(settings.IsDetailSet(Network));
        EXPECT_EQ(settings.GetDetailSeverity(LogDetail::Memory), Severity::Info);
        folder.Write("bad.json", text);
        EXPECT_KOR_ERROR(LogConfig::CreateLogConfig(folder / u"bad.json"), KorvelException,
                         kNotAString);
    }
}

} // namespace
