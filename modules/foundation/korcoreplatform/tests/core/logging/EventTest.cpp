#include "korcoreplatform/main/core/logging/Event.h"

#include "korcoreplatform/main/core/logging/Formatter.h"
#include "korcoreplatform/main/core/logging/LogMessage.h"
#include "korcoreplatform/main/core/logging/Value.h"
#include "korcoreplatform/main/core/runtime/CoreThreadContext.h"
#include "korcoreplatform/tests/support/AllocationCounter.h"
#include "korcoreplatform/tests/support/KorTest.h"
#include "korcoreplatform/tests/support/RecordingLogger.h"
#include "korcoreplatform/tests/support/TimeZoneGuard.h"
#include "korsys/main/error/KorErrorsError.h"
#include "korsys/main/error/TError.h"
#include "korsys/main/system/TStackWalker.h"
#include "korsys/main/system/TSystemCore.h"

#include <boost/any.hpp>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <stdexcept>
#include <thread>
#include <unordered_map>
#include <utility>
#include <vector>

namespace {

using TLog::ActivityInfo;
using TLog::ActivityInfoFactory;
using TLog::Event;
using TLog::EventTime;
using TLog::EventTimestamp;
using TLog::Literal;
using TLog::Object;
using Texts = std::unordered_map<TString, TString>;

EventTime At(long long microseconds)
{
    return EventTime(std::chrono::microseconds(microseconds));
}

TString TextOf(std::shared_ptr<TLog::Value> const& value)
{
    return value == nullptr ? TString(u"none") : TLog::Formatter()(*value);
}

TError::ErrorInfo SomeError()
{
    return TError::ErrorInfo(KorErrorsError::AutoGen_0x318CE3BA(), TError::ErrorSource::Service,
                             grpc::NOT_FOUND);
}

/// Takes the host's functions away again, and holds the thread's logging context.
class EventTest : public testing::Test, protected ISessionObjects
{
protected:
    EventTest()
    {
        CoreThreadContext::SetHasSessionIdFunction([this] { return m_context != nullptr; });
        CoreThreadContext::SetGetSessionObjectsInterfaceFunction(
            [this] { return std::shared_ptr<ISessionObjects>(std::shared_ptr<void>(), this); });
    }

    ~EventTest() override
    {
        CoreThreadContext::SetHasSessionIdFunction({});
        CoreThreadContext::SetGetSessionObjectsInterfaceFunction({});
        ActivityInfoFactory::SetFactoryFunction({});
    }

    void SetSynchronizedObject(TString const&, std::shared_ptr<boost::any>) override {}
    void SetUnsynchronizedObject(TString const&, std::shared_ptr<boost::any>) override {}
    std::shared_ptr<boost::any> GetUnsynchronizedObject(TString const&) override { return {}; }
    std::shared_ptr<boost::any> GetSynchronizedObject(TString const& key) override
    {
        return key == u"logging-ctx" ? std::make_shared<boost::any>(m_context) : nullptr;
    }

    std::shared_ptr<Texts> m_context;
};

TEST_F(EventTest, WithoutFactoryARecordIsOfThisMoment)
{
    EventTimestamp const before;
    Event const event(u"key", nullptr);
    EventTimestamp const after;
    EXPECT_FALSE(event.GetTimestamp() < before || after < event.GetTimestamp());
    EXPECT_EQ(event.GetProcessId(), TSystemCore::ProcessID());
    EXPECT_EQ(event.GetThreadId(), TSystemCore::ThreadID());
    Texts const placeholders = {
        {u"sess", u"-"}, {u"req", u"-"}, {u"traceid", u"-"}, {u"user", u"-"}, {u"site", u"-"}};
    EXPECT_EQ(event.GetAttributes(), placeholders);
    EXPECT_EQ(event.GetKey(), u"key");
    for (auto const& value :
         {event.GetValue(), event.GetLocation(), event.GetActivity(), event.GetError(),
          std::shared_ptr<TLog::Value>(event.GetLoggingContext())}) {
        EXPECT_EQ(value, nullptr);
    }
}

TEST_F(EventTest, TheFactorysActivityIsTaken)
{
    Texts texts = {
        {u"sess", u"s"}, {u"req", u"r"}, {u"traceid", u"t"}, {u"user", u"u"}, {u"site", u"i"}};
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
    EXPECT_EQ(event.GetAttributes(), texts);
    // Records share their texts only as long as all five stay.
    for (auto const& [name, text] : Texts(texts)) {
        texts[name] = u"other";
        EXPECT_EQ(Event(u"key", nullptr).GetAttributes(), texts) << name;
        texts[name] = text;
    }
    EventTimestamp const before;
    time = EventTime();
    EXPECT_FALSE(Event(u"key", nullptr).GetTimestamp() < before);
    Event const own(u"key", nullptr, ActivityInfo({}, 1, 2, u"s", u"r", u"u", u"i", {}, {}));
    EXPECT_EQ(own.GetAttributes().at(u"traceid"), u"");

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
    auto const none = std::shared_ptr<Texts>();
    auto const empty = std::make_shared<Texts>();
    auto const pairs = std::make_shared<Texts>(Texts{{u"a", u"x"}, {u"0", u"y"}});
    struct Case
    {
        int line;
        std::shared_ptr<Texts> ofThread;
        std::shared_ptr<Object> extra;
        char16_t const* context;
    };
    Case const cases[] = {
        {__LINE__, none, nullptr, u"none"},
        {__LINE__, empty, nullptr, u"none"},
        {__LINE__, pairs, nullptr, uR"({"0":"y","a":"x"})"},
        {__LINE__, none, extra, uR"({"a":1,"b":2})"},
        {__LINE__, empty, extra, uR"({"a":1,"b":2})"},
        {__LINE__, pairs, extra, uR"({"0":"y","a":"x","b":2})"},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.line);
        m_context = c.ofThread;
        Event const event(u"key", nullptr,
                          ActivityInfo({}, 1, 2, u"", u"", u"", u"", {}, {}, c.extra));
        EXPECT_EQ(TextOf(event.GetLoggingContext()), TString(c.context));
        EXPECT_EQ(event.GetLoggingContext() == extra, c.extra && c.ofThread != pairs);
        EXPECT_EQ(event.GetLoggingContext(), Event(event).GetLoggingContext());
    }
    EXPECT_EQ(extra->GetValues().size(), 2u) << "the host's object is left alone";
}

TEST_F(EventTest, MessagesAreRecordsLikeAnyOther)
{
    LoggerInSlot<> logger(TLog::Severity::Info);
    TLog::AnySeverity const severity(TLog::Severity::Warn);
    LogMessage(TLog::NonErrorSeverity(severity.Get()), u"text");
    LogMessage(severity, u"pairs", Texts{{u"b", u"2"}, {u"a", u"1"}}, SomeError());
    ASSERT_EQ(logger->records.size(), 2u);
    Event const& message = logger->records[0].event;
    EXPECT_EQ(message.GetKey(), u"msg");
    EXPECT_EQ(message.GetError(), nullptr);
    Event const& pairs = logger->records[1].event;
    EXPECT_EQ(pairs.GetKey(), u"pairs");
    EXPECT_EQ(TextOf(pairs.GetError()), TextOf(TLog::FormatErrorInfo(SomeError())));

    // All who ask for the value get one and the same.
    for (Event const& event : {message, pairs}) {
        std::shared_ptr<TLog::Value> values[4];
        std::vector<std::thread> threads;
        for (auto& value : values) {
            threads.emplace_back([copy = event, &value] { value = copy.GetValue(); });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        EXPECT_EQ(TextOf(values[0]),
                  event.GetKey() == u"msg" ? uR"("text")" : uR"({"a":"1","b":"2"})");
        EXPECT_EQ(std::count(values, values + 4, event.GetValue()), 4);
    }
}

TEST_F(EventTest, AnAcceptedMessageTakesTwoBlocks)
{
    if (!AllocationCounter::IsAvailable()) {
        GTEST_SKIP();
    }
    LoggerInSlot<> logger(TLog::Severity::Info);
    logger->records.reserve(2);
    TLog::NonErrorSeverity const severity(TLog::Severity::Info);
    LogMessage(severity, u"what is made once is made by the first message");
    AllocationCounter const counter;
    LogMessage(severity, u"a message that is too long for its object");
    EXPECT_LE(counter.Count(), 2);
    ASSERT_EQ(logger->records.size(), 2u);
}

TEST_F(EventTest, CopiesShareAndAMovedRecordIsEmpty)
{
    Event event(u"key", Literal::Int(1), SomeError());
    Event copy(event);
    EXPECT_EQ(copy.GetValue(), event.GetValue());
    EXPECT_EQ(copy.GetError(), event.GetError());
    Event& same = copy;
    copy = std::move(same);
    copy = same;
    EXPECT_EQ(copy.GetKey(), u"key");
    Event const moved(std::move(event));
    EXPECT_EQ(moved.GetValue(), copy.GetValue());
    EXPECT_EQ(event.GetKey(), u"");
    EXPECT_TRUE(event.GetAttributes().empty());
    EXPECT_EQ(event.GetTimestamp().GetTime(), EventTime());
    EXPECT_EQ(event.GetValue(), nullptr);
    copy = event;
    EXPECT_EQ(copy.GetError(), nullptr);
    EXPECT_EQ(Event::FormatPointer(reinterpret_cast<void*>(0x1a2b)), u"0x1a2b");
}

TEST_F(EventTest, AnErrorIsAnObjectOfTexts)
{
    EXPECT_EQ(TextOf(TLog::FormatErrorInfo(SomeError())),
              uR"({"excp-error-code":"KorvelException_AutoGen_0x318CE3BA",)"
              uR"("excp-source":"Service","excp-status-code":"NOT_FOUND"})");
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
    struct Case
    {
        int line;
        long long microseconds;
        char16_t const* utc;
        char16_t const* local; ///< Three and a half hours ahead.
    };
    Case const cases[] = {
        {__LINE__, 1709370303004999, u"2024-03-02T09:05:03.004", u"2024-03-02T12:35:03.004"},
        {__LINE__, 0, u"1970-01-01T00:00:00.000", u"1970-01-01T03:30:00.000"},
        {__LINE__, -1, u"1969-12-31T23:59:59.999", u"1970-01-01T03:29:59.999"},
        {__LINE__, -30641760000000000, u"999-01-01T00:00:00.000", u"999-01-01T03:30:00.000"},
    };
    TimeZoneGuard const zone("XYZ-3:30");
    for (Case const& c : cases) {
        SCOPED_TRACE(c.line);
        EventTimestamp const time(At(c.microseconds));
        EXPECT_EQ(time.GetFormattedUtcValue(), TString(c.utc));
        EXPECT_EQ(time.GetFormattedLocalValue(), TString(c.local));
    }
}

} // namespace
