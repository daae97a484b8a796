#include "korcoreplatform/main/core/logging/Formatter.h"

#include "korcoreplatform/main/core/files/TFile.h"
#include "korcoreplatform/main/core/files/TPath.h"
#include "korcoreplatform/main/core/logging/Event.h"
#include "korcoreplatform/main/core/logging/LoggingContext.h"
#include "korcoreplatform/main/core/logging/Value.h"
#include "korcoreplatform/main/core/runtime/OptMetrics.h"
#include "korcoreplatform/main/core/runtime/TUUID.h"
#include "korcoreplatform/tests/support/KorTest.h"
#include "korcoreplatform/tests/support/TimeZoneGuard.h"

#include <nlohmann/json.hpp>

#include <limits>
#include <regex>

namespace {

using nlohmann::json;
using nlohmann::ordered_json;
using namespace TLog;
using Names = std::vector<std::string>;

std::shared_ptr<TLog::Value> const kNone;
constexpr long long kMarch2 = 1709370303004999; // 2024-03-02T09:05:03.004999 UTC

/// A record as the example of the format has it, but for what is asked for.
Event Record(std::shared_ptr<TLog::Value> value, std::shared_ptr<Object> context = nullptr,
             long long microseconds = kMarch2, std::uint32_t pid = 4242, std::uint64_t tid = 0x1a2b)
{
    TLog::EventTime const time{std::chrono::microseconds(microseconds)};
    return Event(u"msg", std::move(value),
                 TLog::ActivityInfo(time, pid, tid, u"-", u"-", u"-", u"-", Literal::Int(1),
                                    Literal::Int(2), std::move(context), u"-"));
}

Event Record(TString const& text)
{
    return Record(Literal::String(text));
}

/// A value of a host, which visits what it is told to.
struct HostValue : TLog::Value
{
    explicit HostValue(std::function<void(TLog::ValueVisitor&)> accept) : accept(accept) {}
    std::shared_ptr<Value> Clone() const override { return nullptr; }
    void Accept(TLog::ValueVisitor& visitor) override { accept(visitor); }

    std::function<void(TLog::ValueVisitor&)> const accept;
};

TEST(FormatterTest, WhatIsKeptFromLineToLineIsRenewed)
{
    std::tuple<long long, std::uint32_t, std::uint64_t, char const*> const cases[] = {
        {kMarch2, 1, 1, "2024-03-02T09:05:03.004 1 1"},
        {kMarch2 - 999, 1, 1, "2024-03-02T09:05:03.004 1 1"},
        {kMarch2 - 1000, 1, 1, "2024-03-02T09:05:03.003 1 1"},
        {kMarch2 - 4999, 1, 1, "2024-03-02T09:05:03.000 1 1"},
        {kMarch2, 1, 1, "2024-03-02T09:05:03.004 1 1"},
        {kMarch2 + 1, 1, 1, "2024-03-02T09:05:03.005 1 1"},
        {kMarch2 + 1000001, 1, 1, "2024-03-02T09:05:04.005 1 1"},
        {kMarch2 + 995000, 1, 1, "2024-03-02T09:05:03.999 1 1"},
        {kMarch2 + 996000, 1, 1, "2024-03-02T09:05:04.000 1 1"},
        {-1, 1, 1, "1969-12-31T23:59:59.999 1 1"},
        {LLONG_MAX, 1, 1, "294247-01-10T04:00:54.775 1 1"},
        {LLONG_MIN, 1, 1, "-290308-12-21T19:59:05.224 1 1"},
        {LLONG_MAX, 1, 1, "294247-01-10T04:00:54.775 1 1"},
        {1, 4294967295, 1, "1970-01-01T00:00:00.000 4294967295 1"},
        {1, 4294967295, ~0ull, "1970-01-01T00:00:00.000 4294967295 ffffffffffffffff"},
        {1, 0, 0, "1970-01-01T00:00:00.000 0 0"},
    };
    TimeZoneGuard const utc("UTC");
    Formatter formatter;
    auto const head = [&](Event const& event) {
        json const line = json::parse(formatter(Severity::Info, event).toStdString());
        return line.value("ts", "") + ' ' + line.at("pid").dump() + ' ' + line.value("tid", "");
    };
    for (auto const& [microseconds, pid, tid, expected] : cases) {
        EXPECT_EQ(head(Record(kNone, nullptr, microseconds, pid, tid)), expected);
    }
    Event gone = Record(u"moved");
    Event const taken(std::move(gone));
    EXPECT_EQ(formatter(static_cast<Severity>(8), gone),
              u"{\"ts\":\"1970-01-01T00:00:00.000\",\"pid\":0,"
              u"\"tid\":\"0\",\"sev\":\"\",\"k\":\"\"}");
}

TEST(FormatterTest, PartsAreThereWhenTheyAreWanted)
{
    Event const event = Record(nullptr, Object::Make({{u"n", Literal::Int(3)}}));
    TLog::SetLogQuarantineUuid(TUUID(u"{00000001-0000-0002-0000-000300000004}"));
    Formatter formatter;
    auto const hasId = [&](int level) {
        return formatter(static_cast<AccessLevel>(level), Severity::Info, event)
            .contains(u"\"sev\":\"info\",\"qlid\":\"00000001-0000-0002-0000-000300000004\",\"req");
    };
    EXPECT_TRUE(!hasId(0) && hasId(1) && !hasId(2));
    TLog::SetLogQuarantineUuid(TUUID());
    EXPECT_FALSE(formatter(AccessLevel::Quarantine, Severity::Info, event).contains(u"qlid"));

    auto const endsWith = [&](TString const& end) {
        return formatter(Severity::Info, event).endsWith(u"\"k\":\"msg\"" + end);
    };
    EXPECT_TRUE(endsWith(u"}"));
    TLog::SetLoggingContextEnabled(true);
    EXPECT_TRUE(endsWith(u",\"ctx\":{\"n\":3}}"));
    OptMetrics::SetIsActivityAndResourceTracingEnabledFunction([] { return true; });
    EXPECT_TRUE(endsWith(u",\"l\":1,\"a\":2,\"ctx\":{\"n\":3}}"));
    OptMetrics::SetIsActivityAndResourceTracingEnabledFunction([] { return false; });
    TLog::SetLoggingContextEnabled(false);
}

TEST(FormatterTest, AFailureLeavesNothingBehind)
{
    Formatter formatter;
    std::string bytes = "before";
    auto const append = [&](Event const& event) {
        formatter.AppendLine(bytes, AccessLevel::Standard, Severity::Info, event);
    };
    auto const failing = std::make_shared<HostValue>(
        [](TLog::ValueVisitor&) { throw std::runtime_error("no value"); });
    EXPECT_THROW(append(Record(Object::Make({{u"a", failing}, {u"b", failing}}))),
                 std::runtime_error);
    OptMetrics::SetIsActivityAndResourceTracingEnabledFunction({});
    EXPECT_THROW(append(Record(u"text")), std::bad_function_call);
    OptMetrics::SetIsActivityAndResourceTracingEnabledFunction([] { return false; });
    EXPECT_EQ(bytes, "before");
    Event const sound = Record(Object::Make({{u"c", kNone}}));
    append(sound);
    EXPECT_EQ(bytes, "before" + Formatter()(Severity::Info, sound).toStdString() + "\n");
}

/// What another writer makes of the text, up to the first zero.
std::string Escaped(TString const& text)
{
    return json(text.toStdString().c_str()).dump(-1, ' ', true);
}

TEST(FormatterTest, EveryUnitHasItsEscape)
{
    Formatter formatter;
    EXPECT_EQ(formatter.Key(u"\U0001F600"), uR"("\ud83d\ude00")");
    EXPECT_EQ(formatter.String(static_cast<char16_t const*>(nullptr)), u"\"\"");
    EXPECT_EQ(formatter.String(u"\xd800\xffff\xdc00"), uR"("\ud800\uffff\udc00")");
    std::u16string all;
    for (char32_t unit = 1; unit < 0x10000; ++unit) {
        all += unit < 0xd800 || unit >= 0xe000 ? static_cast<char16_t>(unit) : u'x';
    }
    TString const text(all.data(), static_cast<int>(all.size()));
    EXPECT_EQ(formatter.String(text).toStdString(), Escaped(text));
    // One or two units of another kind at every place of texts of every length up to several
    // blocks.
    std::mt19937 random(301);
    char16_t const kUnits[] = u"\0\"\\\n\x7f\x80\u0100\u2020\u5c22\u8041\uffff";
    for (std::size_t length = 1; length < 70; ++length) {
        for (std::size_t at = 0; at < length; ++at) {
            std::u16string text(length, u'~');
            text[random() % length] = kUnits[random() % 11];
            text[at] = kUnits[random() % 11];
            TString const whole(text.data(), static_cast<int>(length));
            ASSERT_EQ(formatter.String(whole).toStdString(), Escaped(whole));
        }
    }
}

TEST(FormatterTest, ALineReadsBack)
{
    auto const parsed = [](Event const& event, char const* key) {
        std::string bytes;
        Formatter().AppendLine(bytes, AccessLevel::Standard, Severity::Info, event);
        EXPECT_TRUE(
            std::all_of(bytes.begin(), bytes.end() - 1, [](char c) { return c > 31 && c < 127; }));
        return json::parse(bytes).at(key);
    };
    for (int const length : {0, 1, 100, 511, 512, 513, 1024, 1500, 100000}) {
        for (char16_t const* const piece : {u"plain", u"caf\u00e9 \"\U0001F600\" \\", u"\n"}) {
            TString const text = TString(piece).repeated(length);
            EXPECT_EQ(parsed(Record(text), "v"), text.toStdString());
            EXPECT_EQ(parsed(Event(text, nullptr), "k"), text.toStdString());
        }
    }
    auto value = Literal::Null();
    json expected = nullptr;
    for (int i = 0; i < 30; ++i) { // objects and arrays in each other, with names in no order
        std::string const name = std::to_string(i * 7 % 10);
        value = Object::Make({{name.c_str(), Array::Make({value, Literal::Int(i), nullptr})},
                              {u"\"", Literal::Bool(i % 2 == 0)},
                              {u"", Literal::Double(i / 4.0)}});
        expected = {{name, {expected, i, nullptr}}, {"\"", i % 2 == 0}, {"", i / 4.0}};
    }
    EXPECT_EQ(parsed(Record(value), "v"), expected);
}

TEST(FormatterTest, ScalarsHaveTheirTexts)
{
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    constexpr long long kLeast = std::numeric_limits<long long>::min();
    Formatter f;
    std::pair<TString, char16_t const*> const cases[] = {
        {f.Int(kLeast), u"-9223372036854775808"},
        {f.Double(0.1), u"0.1"},
        {f.Double(1234567.0), u"1.23457e+06"},
        {f.Double(-0.0), u"0"},
        {f.Double(-kInfinity), u"null"},
        {f.Scientific(0.0), u"0"},
        {f.Scientific(1.125), u"1.12e+00"}, // ties to even, unlike the general form
        {f.Scientific(-1e-300), u"-1.00e-300"},
        {f.Scientific(kInfinity - kInfinity), u"null"},
        {f.Scientific(~0ull), u"1.84e+19"},
        {f.Bool(true) + f.Bool(false) + f.Null(), u"truefalsenull"},
        {f(*Literal::Double(12345.0)), u"12345"},
        {f(*Literal::Double(12345.0, Literal::Scientific)), u"1.23e+04"},
        {f(*Literal::Null()), u"null"},
        {f.KeyValue(u"a\"", *Literal::Bool(false)), u"\"a\\\"\":false"},
        {f.KeyValue(u"e", *Object::Make(Object::Map())), u"\"e\":{}"},
        {f(*Array::Make(Array::List())), u"[]"},
    };
    for (auto const& [text, expected] : cases) {
        EXPECT_EQ(text, TString(expected));
    }
}

TEST(FormatterTest, ValuesOfAHostVisitWhatTheyAre)
{
    Formatter formatter;
    auto const nothing = std::make_shared<HostValue>([](auto&) {});
    auto const twice = std::make_shared<HostValue>([](TLog::ValueVisitor& visitor) {
        Object::Make({{u"never", kNone}})->Accept(visitor);
        Array::Make({Literal::Int(1), Literal::Int(2)})->Accept(visitor);
    });
    auto const asking = std::make_shared<HostValue>([&](TLog::ValueVisitor& visitor) {
        Literal(formatter(*Literal::Int(7))).Accept(visitor); // uses the formatter that is at work
    });
    auto const all = Object::Make({{u"c", asking}, {u"b", twice}, {u"a", nothing}});
    EXPECT_EQ(formatter(*all), uR"({"a":null,"b":[1,2],"c":"7"})");
    EXPECT_TRUE(
        formatter(Severity::Info, Record(all)).endsWith(uR"("v":{"a":null,"b":[1,2],"c":"7"}})"));
    twice->Accept(formatter);
    EXPECT_EQ(formatter.GetText(), u"[1,2]");

    class Masking : public Formatter
    {
        void VisitLiteral(Literal&) override
        {
            Literal mask(TString(u"*"));
            Formatter::VisitLiteral(mask);
        }
    };
    EXPECT_TRUE(Masking()(Severity::Info, Record(Array::Make({Literal::Int(1), all})))
                    .endsWith(uR"("v":["*",{"a":null,"b":["*","*"],"c":"*"}]})"));
}

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

std::string Line(Event const& event, Severity severity = Severity::Info)
{
    return Formatter()(severity, event).toStdString();
}

std::string FullLine()
{
    TLog::SetLoggingContextEnabled(true);
    TLog::SetLogQuarantineUuid(TUUID(u"{00000001-0000-0002-0000-000300000004}"));
    OptMetrics::SetIsActivityAndResourceTracingEnabledFunction([] { return true; });
    TLog::ActivityInfoFactory::SetFactoryFunction([](TLog::EventTime, TString const&) {
        return ActivityInfo(
            TLog::EventTime(std::chrono::microseconds(kMarch2 + 13000)), 4242, 0x1a2b, u"s-17",
            u"r-204", u"zoe", u"north", Object::Make({{u"node", Literal::String(u"n3")}}),
            Object::Make({{u"name", Literal::String(u"save")}, {u"step", Literal::Int(2)}}),
            Object::Make({{u"tenant", Literal::String(u"blue")}}), u"5f0c");
    });
    Event const event(u"save-failed",
                      Object::Make({{u"path", Literal::String(u"/tmp/Zo\u00EB.txt")},
                                    {u"tries", Literal::Int(3)}}),
                      TError::ErrorInfo(KorErrorsError::AutoGen_0x8CA372D6(),
                                        TError::ErrorSource::System, grpc::UNKNOWN));
    TString const line = Formatter()(TLog::AccessLevel::Quarantine, Severity::Error, event);
    TLog::ActivityInfoFactory::SetFactoryFunction(nullptr);
    OptMetrics::SetIsActivityAndResourceTracingEnabledFunction([] { return false; });
    TLog::SetLogQuarantineUuid(TUUID());
    TLog::SetLoggingContextEnabled(false);
    return line.toStdString();
}

TEST(FormatterTest, TheDocumentAndTheSchemaHaveItsLinesAndKeys)
{
    TimeZoneGuard const utc("UTC");
    ordered_json const least = ordered_json::parse(Line(Record(kNone)));
    ordered_json const full = ordered_json::parse(FullLine());
    std::string const text = ReadFile(u"docs/logging.md");
    EXPECT_EQ(LinesLike(text, R"((\{"ts".*))"),
              (Names{Line(Record(u"The workbook was opened.")), FullLine()}));
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
        severities.push_back(json::parse(Line(Record(kNone), static_cast<Severity>(i)))["sev"]);
    }
    EXPECT_EQ(schema.at("properties").at("sev").at("enum"), severities);
}

} // namespace
