#include "korcoreplatform/main/core/logging/Formatter.h"

#include "korcoreplatform/main/core/logging/Event.h"
#include "korcoreplatform/main/core/logging/LoggingContext.h"
#include "korcoreplatform/main/core/logging/Value.h"
#include "korcoreplatform/main/core/runtime/OptMetrics.h"
#include "korcoreplatform/main/core/runtime/TUUID.h"
#include "korcoreplatform/tests/support/KorTest.h"
#include "korcoreplatform/tests/support/TimeZoneGuard.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <limits>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>

namespace {

using nlohmann::json;
using TLog::AccessLevel;
using TLog::Array;
using TLog::Event;
using TLog::Formatter;
using TLog::Literal;
using TLog::Object;
using TLog::Severity;

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

/// The line as an independent reader sees it.
json Parsed(Event const& event)
{
    std::string bytes;
    Formatter().AppendLine(bytes, AccessLevel::Standard, Severity::Info, event);
    EXPECT_EQ(bytes.back(), '\n');
    bytes.pop_back();
    EXPECT_EQ(std::count_if(bytes.begin(), bytes.end(), [](char c) { return c < 32 || c > 126; }),
              0);
    return json::parse(bytes);
}

/// A value of a host, which visits what it is told to.
class HostValue : public TLog::Value
{
public:
    explicit HostValue(std::function<void(TLog::ValueVisitor&)> accept) : m_accept(accept) {}
    std::shared_ptr<Value> Clone() const override { return nullptr; }
    void Accept(TLog::ValueVisitor& visitor) override { m_accept(visitor); }

private:
    std::function<void(TLog::ValueVisitor&)> m_accept;
};

std::shared_ptr<TLog::Value> Host(std::function<void(TLog::ValueVisitor&)> accept)
{
    return std::make_shared<HostValue>(accept);
}

/// Lines are written in UTC, and every switch is put back.
class FormatterTest : public testing::Test
{
protected:
    ~FormatterTest() override
    {
        TLog::SetLoggingContextEnabled(false);
        TLog::SetLogQuarantineUuid(TUUID());
        OptMetrics::SetIsActivityAndResourceTracingEnabledFunction([] { return false; });
    }

private:
    TimeZoneGuard m_utc{"UTC"};
};

TEST_F(FormatterTest, ALineHasItsShape)
{
    TString const head = u"{\"ts\":\"2024-03-02T09:05:03.004\",\"pid\":4242,\"tid\":\"1a2b\",";
    TString const attributes =
        uR"("req":"-","sess":"-","site":"-","traceid":"-","user":"-","k":"msg")";
    Formatter formatter;
    EXPECT_EQ(formatter(Severity::Info, Record(u"hello")),
              head + u"\"sev\":\"info\"," + attributes + u",\"v\":\"hello\"}");
    char const* const names[] = {"trace", "debug", "info",      "warn", "error",
                                 "fatal", "off",   "LogDetail", "",     ""};
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(formatter(static_cast<Severity>(i), Record(std::shared_ptr<TLog::Value>())),
                  head + u"\"sev\":\"" + names[i] + u"\"," + attributes + u"}");
    }
    Event gone = Record(u"moved");
    Event const taken(std::move(gone));
    EXPECT_EQ(formatter(Severity::Info, gone), u"{\"ts\":\"1970-01-01T00:00:00.000\",\"pid\":0,"
                                               u"\"tid\":\"0\",\"sev\":\"info\",\"k\":\"\"}");
}

TEST_F(FormatterTest, WhatIsKeptFromLineToLineIsRenewed)
{
    struct Case
    {
        int line;
        long long microseconds;
        std::uint32_t pid;
        std::uint64_t tid;
        char16_t const* start;
    };
    Case const cases[] = {
        {__LINE__, kMarch2, 1, 1, u"2024-03-02T09:05:03.004\",\"pid\":1,\"tid\":\"1\""},
        {__LINE__, kMarch2 + 995000, 1, 1, u"2024-03-02T09:05:03.999\",\"pid\":1,\"tid\":\"1\""},
        {__LINE__, kMarch2 + 996000, 1, 1, u"2024-03-02T09:05:04.000\",\"pid\":1,\"tid\":\"1\""},
        {__LINE__, -1, 1, 1, u"1969-12-31T23:59:59.999\",\"pid\":1,\"tid\":\"1\""},
        {__LINE__, 1, 4294967295, 1, u"1970-01-01T00:00:00.000\",\"pid\":4294967295,\"tid\":\"1\""},
        {__LINE__, 1, 1, ~0ull,
         u"1970-01-01T00:00:00.000\",\"pid\":1,\"tid\":\"ffffffffffffffff\""},
        {__LINE__, 1, 0, 0, u"1970-01-01T00:00:00.000\",\"pid\":0,\"tid\":\"0\""},
    };
    Formatter formatter;
    for (Case const& c : cases) {
        SCOPED_TRACE(c.line);
        Event const event = Record(nullptr, nullptr, c.microseconds, c.pid, c.tid);
        EXPECT_TRUE(formatter(Severity::Info, event).startsWith(u"{\"ts\":\"" + TString(c.start)));
    }
}

TEST_F(FormatterTest, PartsAreThereWhenTheyAreWanted)
{
    Event const event = Record(nullptr, Object::Make({{u"n", Literal::Int(3)}}));
    TLog::SetLogQuarantineUuid(TUUID(u"{00000001-0000-0002-0000-000300000004}"));
    char16_t const kId[] =
        u"\"sev\":\"info\",\"qlid\":\"00000001-0000-0002-0000-000300000004\",\"req";
    Formatter formatter;
    EXPECT_TRUE(formatter(AccessLevel::Quarantine, Severity::Info, event).contains(kId));
    EXPECT_FALSE(formatter(Severity::Info, event).contains(u"qlid"));
    EXPECT_FALSE(formatter(static_cast<AccessLevel>(2), Severity::Info, event).contains(u"qlid"));
    TLog::SetLogQuarantineUuid(TUUID());
    EXPECT_FALSE(formatter(AccessLevel::Quarantine, Severity::Info, event).contains(u"qlid"));

    EXPECT_TRUE(formatter(Severity::Info, event).endsWith(u"\"k\":\"msg\"}"));
    TLog::SetLoggingContextEnabled(true);
    EXPECT_TRUE(formatter(Severity::Info, event).endsWith(u"\"k\":\"msg\",\"ctx\":{\"n\":3}}"));
    EXPECT_TRUE(formatter(Severity::Info, Record(u"")).endsWith(u"\"k\":\"msg\",\"v\":\"\"}"));
    OptMetrics::SetIsActivityAndResourceTracingEnabledFunction([] { return true; });
    EXPECT_TRUE(formatter(Severity::Info, event)
                    .endsWith(u"\"k\":\"msg\",\"l\":1,\"a\":2,\"ctx\":{\"n\":3}}"));
}

TEST_F(FormatterTest, AFailureLeavesNothingBehind)
{
    Formatter formatter;
    std::string bytes = "before";
    auto const append = [&](Event const& event) {
        formatter.AppendLine(bytes, AccessLevel::Standard, Severity::Info, event);
    };
    auto const failing = Host([](TLog::ValueVisitor&) { throw std::runtime_error("no value"); });
    Event const event = Record(Object::Make({{u"a", failing}, {u"b", failing}}));
    EXPECT_THROW(append(event), std::runtime_error);
    OptMetrics::SetIsActivityAndResourceTracingEnabledFunction({});
    EXPECT_THROW(append(Record(u"text")), std::bad_function_call);
    EXPECT_EQ(bytes, "before");

    OptMetrics::SetIsActivityAndResourceTracingEnabledFunction([] { return false; });
    append(Record(Object::Make({{u"c", kNone}})));
    EXPECT_EQ(bytes,
              "before" +
                  Formatter()(Severity::Info, Record(Object::Make({{u"c", kNone}}))).toStdString() +
                  "\n");
}

/// The rule for one unit as it is told, without regard to speed.
std::string Escaped(std::u16string const& text)
{
    std::string result = "\"";
    for (char16_t const unit : text.substr(0, text.find(u'\0'))) {
        std::size_t const found = std::u16string(u"\b\t\n\f\r\"\\").find(unit);
        char hex[8];
        std::snprintf(hex, sizeof(hex), "\\u%04x", unit);
        if (found != std::u16string::npos) {
            result += std::string("\\") + "btnfr\"\\"[found];
        } else if (unit < 32 || unit >= 127) {
            result += hex;
        } else {
            result += static_cast<char>(unit);
        }
    }
    return result + '"';
}

TEST_F(FormatterTest, EveryUnitHasItsEscape)
{
    Formatter formatter;
    EXPECT_EQ(formatter.String(u"\"\\\t\u00e9\x7f\x1f/"), uR"("\"\\\t\u00e9\u007f\u001f/")");
    EXPECT_EQ(formatter.Key(u"\U0001F600"), uR"("\ud83d\ude00")");
    EXPECT_EQ(formatter.String(static_cast<char16_t const*>(nullptr)), u"\"\"");
    std::u16string all;
    for (char32_t unit = 1; unit < 0x10000; ++unit) {
        all += static_cast<char16_t>(unit);
    }
    EXPECT_EQ(formatter.String(TString(all.data(), static_cast<int>(all.size()))).toStdString(),
              Escaped(all));
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
            ASSERT_EQ(formatter.String(whole).toStdString(), Escaped(text));
        }
    }
}

TEST_F(FormatterTest, ALineReadsBack)
{
    for (int const length : {0, 1, 100, 511, 512, 513, 1024, 1500, 100000}) {
        for (char16_t const* const piece : {u"plain", u"caf\u00e9 \"\U0001F600\" \\", u"\n"}) {
            TString const text = TString(piece).repeated(length);
            EXPECT_EQ(Parsed(Record(text)).at("v"), text.toStdString());
            EXPECT_EQ(Parsed(Event(text, nullptr)).at("k"), text.toStdString());
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
    EXPECT_EQ(Parsed(Record(value)).at("v"), expected);
}

TEST_F(FormatterTest, ScalarsHaveTheirTexts)
{
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    constexpr long long kLeast = std::numeric_limits<long long>::min();
    Formatter f;
    struct Case
    {
        int line;
        TString text;
        char16_t const* expected;
    };
    Case const cases[] = {
        {__LINE__, f.Int(kLeast), u"-9223372036854775808"},
        {__LINE__, f.Double(0.1), u"0.1"},
        {__LINE__, f.Double(1234567.0), u"1.23457e+06"},
        {__LINE__, f.Double(-0.0), u"0"},
        {__LINE__, f.Double(-kInfinity), u"null"},
        {__LINE__, f.Scientific(0.0), u"0"},
        {__LINE__, f.Scientific(12345.0), u"1.23e+04"},
        {__LINE__, f.Scientific(1.125), u"1.12e+00"}, // ties to even, unlike the general form
        {__LINE__, f.Scientific(-1e-300), u"-1.00e-300"},
        {__LINE__, f.Scientific(kInfinity - kInfinity), u"null"},
        {__LINE__, f.Scientific(~0ull), u"1.84e+19"},
        {__LINE__, f.Bool(true) + f.Bool(false) + f.Null(), u"truefalsenull"},
        {__LINE__, f(*Literal::Double(12345.0)), u"12345"},
        {__LINE__, f(*Literal::Double(12345.0, Literal::Scientific)), u"1.23e+04"},
        {__LINE__, f(*Literal::Null()), u"null"},
        {__LINE__, f.KeyValue(u"a\"", *Literal::Bool(false)), u"\"a\\\"\":false"},
        {__LINE__, f.KeyValue(u"e", *Object::Make(Object::Map())), u"\"e\":{}"},
        {__LINE__, f(*Array::Make(Array::List())), u"[]"},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.line);
        EXPECT_EQ(c.text, TString(c.expected));
    }
}

TEST_F(FormatterTest, ValuesOfAHostVisitWhatTheyAre)
{
    Formatter formatter;
    auto const nothing = Host([](auto&) {});
    auto const twice = Host([](TLog::ValueVisitor& visitor) {
        Object::Make({{u"never", kNone}})->Accept(visitor);
        Array::Make({Literal::Int(1), Literal::Int(2)})->Accept(visitor);
    });
    auto const asking = Host([&](TLog::ValueVisitor& visitor) {
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

} // namespace
