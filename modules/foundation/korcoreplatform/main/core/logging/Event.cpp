#include "korcoreplatform/main/core/logging/Event.h"

#include "korcoreplatform/main/core/logging/Event_p.h"
#include "korcoreplatform/main/core/logging/LoggingStackWalker.h"
#include "korcoreplatform/main/core/logging/TimeText_p.h"
#include "korcoreplatform/main/core/runtime/CoreThreadContext.h"
#include "korsys/main/error/TError.h"
#include "korsys/main/system/TSystemCore.h"

#include <atomic>
#include <chrono>
#include <utility>

namespace TLog {
namespace {

using TextMap = std::unordered_map<TString, TString>;

Object::Map ToValues(TextPairs const& pairs)
{
    Object::Map values;
    values.reserve(pairs.size());
    for (auto const& [name, text] : pairs) {
        values.emplace(name, Literal::String(text));
    }
    return values;
}

TextPairs ToPairs(TextMap const& texts)
{
    TextPairs pairs;
    pairs.reserve(texts.size());
    for (auto const& [name, text] : texts) {
        pairs.emplace_back(name, text);
    }
    return pairs;
}

using ActivityFunction = std::function<ActivityInfo(EventTime, TString const&)>;

/// Tells that there is a function, so that records need not ask. Set while no other thread logs.
std::atomic<bool> s_hasFactory{false};

/// Never destroyed: records are made until the very end of the process.
ActivityFunction& Factory()
{
    static auto& s_function = *new ActivityFunction;
    return s_function;
}

/// Pairs with the store in `SetFactoryFunction`.
bool HasFactory()
{
    return s_hasFactory.load(std::memory_order_acquire);
}

} // namespace

EventTimestamp::EventTimestamp() noexcept
    : m_time(
          std::chrono::time_point_cast<std::chrono::microseconds>(std::chrono::system_clock::now()))
{}

TString EventTimestamp::GetFormattedValue(bool local) const
{
    SplitTime const split(m_time);
    char text[kMaxTimeBytes];
    char* end = WriteSecond(text, split.second, local);
    *end++ = '.';
    end = WriteMilliseconds(end, split.milliseconds);
    return TString(text, static_cast<int>(end - text));
}

TString EventTimestamp::GetFormattedLocalTimestamp()
{
    return EventTimestamp().GetFormattedLocalValue();
}

TString EventTimestamp::GetFormattedUtcTimestamp()
{
    return EventTimestamp().GetFormattedUtcValue();
}

ActivityInfo::ActivityInfo(EventTime time, std::uint32_t processId, std::uint64_t threadId,
                           TString const& session, TString const& request, TString const& user,
                           TString const& site, std::shared_ptr<Value> location,
                           std::shared_ptr<Value> activity, std::shared_ptr<Object> extra,
                           TString const& traceId)
    : m_time(time), m_processId(processId), m_threadId(threadId), m_session(session),
      m_request(request), m_traceId(traceId), m_user(user), m_site(site),
      m_location(std::move(location)), m_activity(std::move(activity)), m_extra(std::move(extra))
{}

void ActivityInfoFactory::SetFactoryFunction(ActivityFunction function)
{
    bool const isSet = static_cast<bool>(function);
    Factory() = std::move(function);
    s_hasFactory.store(isSet, std::memory_order_release);
}

ActivityInfo ActivityInfoFactory::CreateActivityInfo(EventTime time, TString const& placeholder)
{
    if (HasFactory()) {
        return Factory()(time, placeholder);
    }
    return ActivityInfo(time, TSystemCore::ProcessID(), TSystemCore::ThreadID(), placeholder,
                        placeholder, placeholder, placeholder, nullptr, nullptr, nullptr,
                        placeholder);
}

std::shared_ptr<Value> Event::Record::GetValue() const
{
    if (auto const* shared = std::get_if<std::shared_ptr<Value>>(&value)) {
        return *shared;
    }
    return madeValue.Get([this]() -> std::shared_ptr<Value> {
        auto const* const text = std::get_if<TString>(&value);
        return text != nullptr ? Literal::String(*text)
                               : Object::Make(ToValues(std::get<TextPairs>(value)));
    });
}

std::shared_ptr<Object> Event::Record::GetContext() const
{
    if (auto const* shared = std::get_if<std::shared_ptr<Object>>(&context)) {
        return *shared;
    }
    return madeContext.Get([this] { return Object::Make(ToValues(std::get<TextPairs>(context))); });
}

void Event::Record::TakeContext(std::shared_ptr<Object> const& extra)
{
    std::shared_ptr<TextMap> const ofThread = CoreThreadContextUtils::GetLoggingContext();
    if (ofThread == nullptr || ofThread->empty()) {
        context = extra;
    } else if (extra == nullptr) {
        context = ToPairs(*ofThread);
    } else {
        std::shared_ptr<Object> const joined = Object::Make(*ofThread);
        joined->AppendValues(extra->GetValues());
        context = joined;
    }
}

std::unique_ptr<Event::Record> Event::Record::Make(TString&& key)
{
    if (HasFactory()) {
        return Make(std::move(key), ActivityInfoFactory::CreateActivityInfo(
                                        EventTime(), AttributeSet::Placeholder()));
    }
    auto record =
        std::make_unique<Record>(std::move(key), EventTimestamp(), TSystemCore::ProcessID(),
                                 TSystemCore::ThreadID(), AttributeSet::OfPlaceholder());
    record->TakeContext(nullptr);
    return record;
}

std::unique_ptr<Event::Record> Event::Record::Make(TString&& key, ActivityInfo const& activity)
{
    EventTime const time = activity.GetTime();
    auto record = std::make_unique<Record>(
        std::move(key), time == EventTime() ? EventTimestamp() : EventTimestamp(time),
        activity.GetProcessId(), activity.GetThreadId(),
        AttributeSet::Find(activity.GetSession(), activity.GetRequest(), activity.GetTraceId(),
                           activity.GetUser(), activity.GetSite()));
    record->location = activity.GetLocation();
    record->activity = activity.GetActivity();
    record->TakeContext(activity.GetExtra());
    return record;
}

template <class Content>
Event EventAccess::Make(TString&& key, Content&& content, TError::ErrorInfo* error)
{
    std::unique_ptr<Event::Record> record = Event::Record::Make(std::move(key));
    record->value = std::move(content);
    if (error != nullptr) {
        record->error = FormatErrorInfo(std::move(*error));
    }
    return Event(record.release());
}

Event EventAccess::OfMessage(TString&& text, TError::ErrorInfo* error)
{
    return Make(TString(u"msg", 3), std::move(text), error);
}

Event EventAccess::OfPairs(TString&& key, TextMap const& pairs, TError::ErrorInfo* error)
{
    return Make(std::move(key), ToPairs(pairs), error);
}

Event::Record const& EventAccess::RecordOf(Event const& event) noexcept
{
    static Event::Record const& s_movedFrom =
        *new Event::Record(TString(), EventTimestamp(EventTime()), 0, 0, AttributeSet::Empty());
    return event.m_record != nullptr ? *event.m_record : s_movedFrom;
}

Event::Event(TString const& key, std::shared_ptr<Value> value, ActivityInfo&& activity)
{
    std::unique_ptr<Record> record = Record::Make(TString(key), activity);
    record->value = std::move(value);
    m_record = record.release();
}

Event::Event(TString const& key, std::shared_ptr<Value> value)
    : Event(EventAccess::Make(TString(key), std::move(value), nullptr))
{}

Event::Event(TString const& key, std::shared_ptr<Value> value, TError::ErrorInfo&& error)
    : Event(EventAccess::Make(TString(key), std::move(value), &error))
{}

Event::Event(Event const& other) noexcept : m_record(other.m_record)
{
    if (m_record != nullptr) {
        m_record->references.fetch_add(1, std::memory_order_relaxed);
    }
}

Event& Event::operator=(Event const& other) noexcept
{
    return *this = Event(other);
}

Event& Event::operator=(Event&& other) noexcept
{
    Event moved(std::move(other)); // of this object, perhaps
    std::swap(m_record, moved.m_record);
    return *this;
}

Event::~Event()
{
    // A record with one owner is not counted down: nobody else can take it any more.
    if (m_record != nullptr &&
        (m_record->references.load(std::memory_order_acquire) == 1 ||
         m_record->references.fetch_sub(1, std::memory_order_acq_rel) == 1)) {
        delete m_record;
    }
}

EventTimestamp const& Event::GetTimestamp() const noexcept
{
    return EventAccess::RecordOf(*this).timestamp;
}

std::uint32_t Event::GetProcessId() const noexcept
{
    return EventAccess::RecordOf(*this).processId;
}

std::uint64_t Event::GetThreadId() const noexcept
{
    return EventAccess::RecordOf(*this).threadId;
}

TextMap const& Event::GetAttributes() const noexcept
{
    return EventAccess::RecordOf(*this).attributes->GetTexts();
}

TString const& Event::GetKey() const noexcept
{
    return EventAccess::RecordOf(*this).key;
}

std::shared_ptr<Value> Event::GetValue() const
{
    return EventAccess::RecordOf(*this).GetValue();
}

std::shared_ptr<Value> Event::GetLocation() const noexcept
{
    return EventAccess::RecordOf(*this).location;
}

std::shared_ptr<Value> Event::GetActivity() const noexcept
{
    return EventAccess::RecordOf(*this).activity;
}

std::shared_ptr<Value> Event::GetError() const
{
    return EventAccess::RecordOf(*this).error;
}

std::shared_ptr<Object> Event::GetLoggingContext() const
{
    return EventAccess::RecordOf(*this).GetContext();
}

TString Event::FormatPointer(void const* address)
{
    return TString::pointer(address, true, false);
}

std::shared_ptr<Value> FormatErrorInfo(TError::ErrorInfo&& error)
{
    TString id;
    TString source;
    TString status;
    error.GetMembersAsStrings(id, source, status);
    status = TError::GetStatusCodeAsString(error.GetStatusCode());
    Object::Map values = {{u"excp-error-code", Literal::String(std::move(id))},
                          {u"excp-source", Literal::String(std::move(source))},
                          {u"excp-status-code", Literal::String(std::move(status))}};
    if (!error.GetCallstack().empty()) {
        values.emplace(u"callstack",
                       Literal::String(LoggingStackWalker::FramesToLogLine(error.GetCallstack())));
    }
    return Object::Make(std::move(values));
}

} // namespace TLog
