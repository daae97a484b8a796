#include "korcoreplatform/main/core/logging/Event.h"

#include "korcoreplatform/main/core/logging/Formatter.h"
#include "korcoreplatform/main/core/logging/LogMessage.h"
#include "korcoreplatform/tests/support/RecordingLogger.h"
#include "korcoreplatform/tests/support/SessionHooks.h"
#include "korcoreplatform/tests/support/TimeZoneGuard.h"
#include "korsys/main/system/TStackWalker.h"
#include "korsys/main/system/TSystemCore.h"
#include "korsys/tests/support/Threads.h"

namespace {

using KorTest::SomeError;
using namespace TLog;
using Texts = std::unordered_map<TString, TString>;

EventTime At(long long microseconds)
{
    return EventTime(std::chrono::microseconds(microseconds));
}

Texts Attributes(TString const& sess, TString const& req, TString const& traceid,
                 TString const& user, TString const& site)
{
    return {
        {u"sess", sess}, {u"req", req}, {u"traceid", traceid}, {u"user", user}, {u"site", site}};
}

TString TextOf(std::shared_ptr<TLog::Value> const& value)
{
    return value == nullptr ? TString(u"none") : TLog::Formatter()(*value);
}

/// Takes the host's functions away again.
struct EventTest : testing::Test
{
    ~EventTest() override { ActivityInfoFactory::SetFactoryFunction({}); }

    SessionHooks const hooks;
};

TEST_F(EventTest, WithoutFactoryARecordIsOfThisMoment)
{
    EventTimestamp const before;
    Event const event(u"key", nullptr);
    EventTimestamp const after;
    EXPECT_FALSE(event.GetTimestamp() < before || after < event.GetTimestamp());
    EXPECT_EQ(event.GetProcessId(), TSystemCore::ProcessID());
    EXPECT_EQ(event.GetThreadId(), TSystemCore::ThreadID());
    EXPECT_EQ(event.GetAttributes(), Attributes(u"-", u"-", u"-", u"-", u"-"));
    EXPECT_EQ(event.GetKey(), u"key");
    EXPECT_FALSE(event.GetValue() || event.GetLocation() || event.GetActivity() ||
                 event.GetError() || event.GetLoggingContext());
}

TEST_F(EventTest, TheFactorysActivityIsTaken)
{
    Texts texts = Attributes(u"s", u"r", u"t", u"u", u"i");
    auto const location = Literal::String(u"l");
    auto const activity = Literal::String(u"a");
    EventTime time = At(5);
    ActivityInfoFactory::SetFactoryFunction([&](EventTime asked, TString const& placeholder) {
        EXPECT_EQ(asked, EventTime());
        EXPECT_EQ(placeholder, u"-");
        return ActivityInfo(time, 42, 1ull << 40, texts[u"sess"], texts[u"req"], texts[u"user"],
                            texts[u"site"], location, activity, nullptr, texts[u"traceid"]);
    });
    Event const event(u"key", nullptr);
    EXPECT_EQ(event.GetTimestamp().GetTime(), At(5));
    EXPECT_EQ(event.GetProcessId(), 42u);
    EXPECT_EQ(event.GetThreadId(), 1ull << 40);
    EXPECT_EQ(event.GetLocation(), location);
    EXPECT_EQ(event.GetActivity(), activity);
    // Records share their texts only as long as all five stay.
    for (auto const& [name, text] : Texts(texts)) {
        EXPECT_EQ(Event(u"key", nullptr).GetAttributes(), texts);
        texts[name] = u"other";
        EXPECT_EQ(Event(u"key", nullptr).GetAttributes(), texts) << name;
        texts[name] = text;
    }
    EventTimestamp const before;
    time = EventTime();
    EXPECT_FALSE(Event(u"key", nullptr).GetTimestamp() < before);
    Event const own(u"key", nullptr, ActivityInfo({}, 1, 2, u"s", u"r", u"u", u"i", {}, {}));
    EXPECT_EQ(own.GetAttributes(), Attributes(u"s", u"r", u"", u"u", u"i"));

    ActivityInfoFactory::SetFactoryFunction(
        [](auto...) -> ActivityInfo { throw std::runtime_error("no activity"); });
    EXPECT_THROW(Event(u"key", nullptr), std::runtime_error);
}

TEST_F(EventTest, ThreadsMakeRecordsToTheirEnd)
{
    struct Last
    {
        ~Last() { *attributes = Event(u"key", nullptr).GetAttributes(); }
        Texts* attributes = nullptr;
    };
    ActivityInfoFactory::SetFactoryFunction([](auto, TString const& text) {
        return ActivityInfo({}, 1, 2, text, text, text, u"site", nullptr, nullptr);
    });
    Texts attributes;
    std::thread([&] {
        thread_local Last t_last; // dies after what the first record leaves behind
        t_last.attributes = &attributes;
        Event const first(u"key", nullptr);
    }).join();
    EXPECT_EQ(attributes.at(u"site"), u"site");
}

TEST_F(EventTest, TheThreadsContextGoesBeforeTheActivitysPairs)
{
    auto const extra = Object::Make({{u"a", Literal::Int(1)}, {u"b", Literal::Int(2)}});
    auto const empty = std::make_shared<Texts>();
    auto const pairs = std::make_shared<Texts>(Texts{{u"a", u"x"}, {u"0", u"y"}});
    std::tuple<std::shared_ptr<Texts>, std::shared_ptr<Object>, char16_t const*> const cases[] = {
        {nullptr, nullptr, u"none"},
        {empty, nullptr, u"none"},
        {pairs, nullptr, uR"({"0":"y","a":"x"})"},
        {nullptr, extra, uR"({"a":1,"b":2})"},
        {empty, extra, uR"({"a":1,"b":2})"},
        {pairs, extra, uR"({"0":"y","a":"x","b":2})"},
    };
    OwnedSession const session;
    SessionScope const scope(session.Id());
    for (auto const& [ofThread, extraPairs, context] : cases) {
        SCOPED_TRACE(TString(context));
        CoreThreadContextUtils::SetLoggingContext(ofThread);
        Event const event(u"key", nullptr,
                          ActivityInfo({}, 1, 2, u"", u"", u"", u"", {}, {}, extraPairs));
        EXPECT_EQ(TextOf(event.GetLoggingContext()), TString(context));
        EXPECT_EQ(event.GetLoggingContext() == extra, extraPairs && ofThread != pairs);
        EXPECT_EQ(event.GetLoggingContext(), Event(event).GetLoggingContext());
    }
    EXPECT_EQ(extra->GetValues().size(), 2u) << "the host's object is left alone";
}

TEST_F(EventTest, AllWhoAskAMessageForItsValueGetOneAndTheSame)
{
    LogRecording const log;
    LogMessage(u"text");
    LogMessage(TLog::NonErrorSeverity(TLog::Severity::Warn), u"",
               Texts{{u"b", u"2"}, {u"a", u"1"}});
    for (LogRecord const& record : log.Records()) {
        std::shared_ptr<TLog::Value> values[4];
        OnThreads(4, [&](unsigned i) { values[i] = Event(record.event).GetValue(); });
        for (auto const& value : values) {
            EXPECT_EQ(value, record.event.GetValue());
        }
    }
    EXPECT_EQ(TextOf(log.Records().at(0).event.GetValue()), uR"("text")");
    EXPECT_EQ(TextOf(log.Records().at(1).event.GetValue()), uR"({"a":"1","b":"2"})");
}

TEST_F(EventTest, WhatARecordHoldsDiesWithIt)
{
    auto const context = std::make_shared<Texts>(Texts{{u"a", u"b"}});
    OwnedSession const session;
    SessionScope const scope(session.Id());
    for (int const length : {10, 1000}) { // in the block of the record, and not
        CoreThreadContextUtils::SetLoggingContext(context);
        std::vector<std::weak_ptr<TLog::Value>> values;
        {
            LogRecording const log;
            LogMessage(TLog::AnySeverity(TLog::Severity::Error), TString(u'x', length),
                       SomeError());
            Event const message = log.Records().at(0).event;
            Event const pair(u"key", Literal::Int(1), SomeError());
            values = {message.GetError(), message.GetLoggingContext(), message.GetValue(),
                      pair.GetError(),    pair.GetLoggingContext(),    pair.GetValue()};
            for (auto const& value : values) {
                EXPECT_FALSE(value.expired());
            }
        }
        for (auto const& value : values) {
            EXPECT_TRUE(value.expired()) << &value - values.data();
        }
    }
}

TEST_F(EventTest, CopiesShareAndAMovedRecordIsEmpty)
{
    Event event(u"key", Literal::Int(1), SomeError());
    Event copy(event);
    Event& same = copy;
    copy = std::move(same);
    copy = same;
    EXPECT_EQ(copy.GetKey(), u"key");
    EXPECT_EQ(copy.GetError(), event.GetError());
    Event const moved(std::move(event));
    EXPECT_EQ(moved.GetValue(), copy.GetValue());
    copy = event; // what it was moved from
    EXPECT_EQ(copy.GetKey(), u"");
    EXPECT_TRUE(copy.GetAttributes().empty());
    EXPECT_EQ(copy.GetTimestamp().GetTime(), EventTime());
    EXPECT_FALSE(copy.GetValue() || copy.GetError());
    EXPECT_EQ(Event::FormatPointer(reinterpret_cast<void*>(0x1a2b)), u"0x1a2b");
}

TEST_F(EventTest, AnErrorHasItsCallstack)
{
    TStackWalker::SetActive(true);
    TError::ErrorInfo withStack = SomeError();
    TStackWalker::SetActive(false);
    TString const frame = TString::fromStdString(withStack.GetCallstack().at(0));
    auto const value = TLog::FormatErrorInfo(std::move(withStack));
    auto const& values = dynamic_cast<Object&>(*value).GetValues();
    EXPECT_TRUE(TextOf(values.at(u"callstack")).startsWith(u"\"" + frame + u"\\n"));
}

TEST_F(EventTest, TimesAreWrittenToTheMillisecond)
{
    // The local time is three and a half hours ahead.
    std::tuple<long long, TString, TString> const cases[] = {
        {1709370303004999, u"2024-03-02T09:05:03.004", u"2024-03-02T12:35:03.004"},
        {-1, u"1969-12-31T23:59:59.999", u"1970-01-01T03:29:59.999"},
        {-30641760000000000, u"999-01-01T00:00:00.000", u"999-01-01T03:30:00.000"},
    };
    TimeZoneGuard const zone("XYZ-3:30");
    for (auto const& [microseconds, utc, local] : cases) {
        EXPECT_EQ(EventTimestamp(At(microseconds)).GetFormattedUtcValue(), utc);
        EXPECT_EQ(EventTimestamp(At(microseconds)).GetFormattedLocalValue(), local);
    }
}

} // namespace
