#include "korcoreplatform/main/core/files/TFile.h"
#include "korcoreplatform/main/core/files/TPath.h"
#include "korcoreplatform/main/core/logging/Event.h"
#include "korcoreplatform/main/core/logging/Formatter.h"
#include "korcoreplatform/main/core/logging/LoggingContext.h"
#include "korcoreplatform/main/core/logging/Value.h"
#include "korcoreplatform/main/core/runtime/OptMetrics.h"
#include "korcoreplatform/main/core/runtime/TUUID.h"
#include "korcoreplatform/tests/support/KorTest.h"
#include "korcoreplatform/tests/support/TimeZoneGuard.h"

#include <nlohmann/json.hpp>

#include <regex>

namespace {

using nlohmann::ordered_json;
using namespace TLog;
using Names = std::vector<std::string>;

TLog::EventTime const kTime{std::chrono::microseconds(1709370303004000)};

std::string ReadFile(TString const& name)
{
    return TFile::LoadUtf8File(u"" KOR_PROJECT_FOLDER "/" + name, false);
}

/// The first group of the pattern, for each line that is like it.
Names LinesLike(std::string const& text, std::string const& pattern)
{
    Names found;
    std::istringstream in(text);
    std::smatch match;
    for (std::string line; std::getline(in, line);) {
        if (std::regex_match(line, match, std::regex(pattern))) {
            found.push_back(match[1]);
        }
    }
    return found;
}

Names KeysOf(ordered_json const& object)
{
    Names keys;
    for (auto const& pair : object.items()) {
        keys.push_back(pair.key());
    }
    return keys;
}

std::string PlainLine(std::shared_ptr<TLog::Value> value, Severity severity = Severity::Info)
{
    Event const event(
        u"msg", std::move(value),
        ActivityInfo(kTime, 4242, 0x1a2b, u"-", u"-", u"-", u"-", nullptr, nullptr, nullptr, u"-"));
    return TLog::Formatter()(severity, event).toStdString();
}

std::string FullLine()
{
    TLog::ActivityInfoFactory::SetFactoryFunction([](TLog::EventTime, TString const&) {
        return ActivityInfo(
            kTime + std::chrono::milliseconds(13), 4242, 0x1a2b, u"s-17", u"r-204", u"zoe",
            u"north", Object::Make({{u"node", Literal::String(u"n3")}}),
            Object::Make({{u"name", Literal::String(u"save")}, {u"step", Literal::Int(2)}}),
            Object::Make({{u"tenant", Literal::String(u"blue")}}), u"5f0c");
    });
    Event const event(u"save-failed",
                      Object::Make({{u"path", Literal::String(u"/tmp/Zo\u00EB.txt")},
                                    {u"tries", Literal::Int(3)}}),
                      TError::ErrorInfo(KorErrorsError::AutoGen_0x8CA372D6(),
                                        TError::ErrorSource::System, grpc::UNKNOWN));
    TLog::ActivityInfoFactory::SetFactoryFunction(nullptr);
    TLog::SetLogQuarantineUuid(TUUID(u"{00000001-0000-0002-0000-000300000004}"));
    return TLog::Formatter()(TLog::AccessLevel::Quarantine, Severity::Error, event).toStdString();
}

TEST(LoggingDocumentTest, TheLinesTheTableAndTheSchemaAreThoseOfTheFormatter)
{
    TimeZoneGuard const utc("UTC");
    TLog::SetLoggingContextEnabled(true);
    OptMetrics::SetIsActivityAndResourceTracingEnabledFunction([] { return true; });
    std::string const plainLine = PlainLine(Literal::String(u"The workbook was opened."));
    std::string const fullLine = FullLine();
    ordered_json const least = ordered_json::parse(PlainLine(nullptr));
    ordered_json const full = ordered_json::parse(fullLine);
    TLog::SetLoggingContextEnabled(false);
    TLog::SetLogQuarantineUuid(TUUID());
    OptMetrics::SetIsActivityAndResourceTracingEnabledFunction([] { return false; });

    std::string const text = ReadFile(u"docs/logging.md");
    EXPECT_EQ(LinesLike(text, R"((\{"ts".*))"), (Names{plainLine, fullLine}));
    std::string const table =
        text.substr(text.find("| key |"), text.find("\n- Texts") - text.find("| key |"));
    EXPECT_EQ(LinesLike(table, R"(\| `(\w+)` \| .*)"), KeysOf(full));
    EXPECT_EQ(LinesLike(table, R"(\| `(\w+)` \| always \| .*)"), KeysOf(least));

    ordered_json const schema = ordered_json::parse(ReadFile(u"tools/log-line.schema.json"));
    EXPECT_EQ(KeysOf(schema.at("properties")), KeysOf(full));
    EXPECT_EQ(schema.at("required"), KeysOf(least));
    for (auto const& [key, rule] : schema.at("properties").items()) {
        std::string const type =
            full.at(key).is_number_integer() ? "integer" : full.at(key).type_name();
        EXPECT_EQ(rule.value("type", type), type) << key;
        if (rule.contains("pattern")) {
            std::regex const pattern(rule["pattern"].get<std::string>());
            EXPECT_TRUE(std::regex_match(full[key].get<std::string>(), pattern)) << key;
        }
    }
    Names severities;
    for (int i = 0; i <= static_cast<int>(Severity::LogDetail); ++i) {
        severities.push_back(
            ordered_json::parse(PlainLine(nullptr, static_cast<Severity>(i)))["sev"]);
    }
    EXPECT_EQ(schema.at("properties").at("sev").at("enum"), severities);
}

} // namespace
