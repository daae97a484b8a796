#include "korcoreplatform/main/core/logging/Event.h"

#include "korcoreplatform/main/core/logging/Event_p.h"
#include "korcoreplatform/main/core/logging/LoggingStackWalker.h"
#include "korcoreplatform/main/core/logging/PlainUnits_p.h"
#include "korcoreplatform/main/core/logging/RecordMemory_p.h"
#include "korcoreplatform/main/core/logging/TimeText_p.h"
#include "korcoreplatform/main/core/runtime/CoreThreadContext.h"
#include "korsys/main/error/TError.h"
#include "korsys/main/system/TSystemCore.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstring>
#include <new>
#include <type_traits>
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

constexpr int kMaxShortUnits =
    static_cast<int>((RecordMemory::kLargeBytes - sizeof(EventAccess::Record)) / sizeof(char16_t));

static_assert(kMaxShortUnits < 1 << 14, "the bits of LogItem::tailLength");

TString const& MessageKey()
{
    static TString const& s_key = *new TString(u"msg", 3);
    return s_key;
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

/// When and where a record is made.
struct Event::Record::Origin
{
    EventTimestamp time;
    std::uint32_t process;
    std::uint64_t thread;
    AttributeSet::Pointer attributes;
};

Event::Record::Record(RecordTail what, std::size_t length, Origin&& origin) noexcept
    : LogItem(LogItemKind::Log), processId(origin.process), timestamp(origin.time),
      threadId(origin.thread), attributes(std::move(origin.attributes))
{
    tail = what;
    tailLength = static_cast<std::uint16_t>(length);
}

Event::Record::~Record()
{
    if (rest != nullptr) {
        rest->~Rest();
        if (tail != RecordTail::Rest) {
            RecordMemory::Free(rest, sizeof(Rest));
        }
    }
}

std::size_t Event::Record::Bytes() const noexcept
{
    std::size_t const unit = tail == RecordTail::PlainText ? sizeof(char) : sizeof(char16_t);
    return sizeof(Record) + (tail == RecordTail::Rest ? sizeof(Rest) : tailLength * unit);
}

void Event::Record::Delete::operator()(Record* record) const noexcept
{
    std::size_t const bytes = record->Bytes();
    record->~Record();
    RecordMemory::Free(record, bytes);
}

inline Event::Record::Pointer Event::Record::Allocate(ShortMessage message, Origin&& origin)
{
    static_assert(sizeof(Record) + 56 <= RecordMemory::kSmallBytes, "two cache lines for most");
    auto const length = static_cast<std::size_t>(message.length);
    std::size_t const plainBytes = sizeof(Record) + length;
    std::size_t const bytes = sizeof(Record) + length * sizeof(char16_t);
    auto const textOf = [](void* block) { return static_cast<char*>(block) + sizeof(Record); };
    RecordTail tail = RecordTail::PlainText;
    void* block = RecordMemory::Allocate(plainBytes);
    if (CopyPlainUnits(message.units, length, textOf(block)) != length) {
        if (!RecordMemory::AreOfOneSize(plainBytes, bytes)) {
            RecordMemory::Free(block, plainBytes);
            block = RecordMemory::Allocate(bytes);
        }
        tail = RecordTail::Text;
        std::memcpy(textOf(block), message.units, length * sizeof(char16_t));
    }
    return Pointer(new (block) Record(tail, length, std::move(origin)));
}

Event::Record::Pointer Event::Record::Allocate(TString&& key, Origin&& origin)
{
    static_assert(sizeof(Record) + sizeof(Rest) <= RecordMemory::kMediumBytes &&
                  alignof(Rest) <= alignof(Record) &&
                  std::is_nothrow_default_constructible_v<Rest>);
    void* const block = RecordMemory::Allocate(sizeof(Record) + sizeof(Rest));
    Pointer record(new (block) Record(RecordTail::Rest, 0, std::move(origin)));
    record->rest = new (record.get() + 1) Rest;
    record->rest->key = std::move(key);
    return record;
}

template <class Content>
inline Event::Record::Pointer Event::Record::Make(Content&& content)
{
    if (HasFactory()) {
        return Make(std::forward<Content>(content), ActivityInfoFactory::CreateActivityInfo(
                                                        EventTime(), AttributeSet::Placeholder()));
    }
    Pointer record = Allocate(std::forward<Content>(content),
                              {EventTimestamp(), TSystemCore::ProcessID(), TSystemCore::ThreadID(),
                               AttributeSet::OfPlaceholder()});
    record->TakeContext(nullptr);
    return record;
}

template <class Content>
inline Event::Record::Pointer Event::Record::Make(Content&& content, ActivityInfo const& info)
{
    EventTime const time = info.GetTime();
    Pointer record =
        Allocate(std::forward<Content>(content),
                 {time == EventTime() ? EventTimestamp() : EventTimestamp(time),
                  info.GetProcessId(), info.GetThreadId(),
                  AttributeSet::Find(info.GetSession(), info.GetRequest(), info.GetTraceId(),
                                     info.GetUser(), info.GetSite())});
    if (info.GetLocation() != nullptr || info.GetActivity() != nullptr) {
        record->NeedRest().location = info.GetLocation();
        record->NeedRest().activity = info.GetActivity();
    }
    record->TakeContext(info.GetExtra());
    return record;
}

Event::Record const& Event::Record::MovedFrom()
{
    static Record const& s_record =
        *Allocate(TString(), {EventTimestamp(EventTime()), 0, 0, AttributeSet::Empty()}).release();
    return s_record;
}

TString const& Event::Record::GetKey() const noexcept
{
    return tail == RecordTail::Rest ? rest->key : MessageKey();
}

std::shared_ptr<Value> Event::Record::GetValue() const
{
    if (tail != RecordTail::Rest) {
        return madeValue.Get([this]() -> std::shared_ptr<Value> {
            return Literal::String(tail == RecordTail::PlainText
                                       ? TString(PlainText().data(), static_cast<int>(tailLength))
                                       : TString(Text().data(), static_cast<int>(tailLength)));
        });
    }
    if (auto const* shared = std::get_if<std::shared_ptr<Value>>(&rest->value)) {
        return *shared;
    }
    return madeValue.Get([this]() -> std::shared_ptr<Value> {
        if (auto const* text = std::get_if<TString>(&rest->value)) {
            return Literal::String(*text);
        }
        return Object::Make(ToValues(std::get<TextPairs>(rest->value)));
    });
}

std::shared_ptr<Object> Event::Record::GetContext() const
{
    Rest const& all = GetRest();
    if (auto const* shared = std::get_if<std::shared_ptr<Object>>(&all.context)) {
        return *shared;
    }
    return all.madeContext.Get(
        [&all] { return Object::Make(ToValues(std::get<TextPairs>(all.context))); });
}

Event::Record::Rest const& Event::Record::NoRest() noexcept
{
    static Rest const& s_none = *new Rest;
    return s_none;
}

Event::Record::Rest const& Event::Record::GetRest() const noexcept
{
    return rest != nullptr ? *rest : NoRest();
}

namespace {

// Made while the library loads: in a child of `fork`, nobody finishes what another thread was just
// making, and whoever needs it waits for ever.
[[maybe_unused]] auto const& s_noRest = EventAccess::Record::NoRest();
[[maybe_unused]] auto const& s_movedFrom = EventAccess::Record::MovedFrom();
[[maybe_unused]] auto const& s_messageKey = MessageKey();
[[maybe_unused]] auto const& s_placeholder = AttributeSet::OfPlaceholder();

} // namespace

Event::Record::Rest& Event::Record::NeedRest()
{
    if (rest == nullptr) {
        rest = new (RecordMemory::Allocate(sizeof(Rest))) Rest;
    }
    return *rest;
}

inline void Event::Record::TakeContext(std::shared_ptr<Object> const& extra)
{
    std::shared_ptr<TextMap> const ofThread = CoreThreadContextUtils::GetLoggingContext();
    if (ofThread != nullptr || extra != nullptr) {
        TakeContext(ofThread, extra);
    }
}

void Event::Record::TakeContext(std::shared_ptr<TextMap> const& ofThread,
                                std::shared_ptr<Object> const& extra)
{
    if (ofThread == nullptr || ofThread->empty()) {
        if (extra != nullptr) {
            NeedRest().context = extra;
        }
    } else if (extra == nullptr) {
        NeedRest().context = ToPairs(*ofThread);
    } else {
        std::shared_ptr<Object> const joined = Object::Make(*ofThread);
        joined->AppendValues(extra->GetValues());
        NeedRest().context = joined;
    }
}

inline Event EventAccess::Finish(Record::Pointer record, TError::ErrorInfo* error)
{
    if (error != nullptr) {
        record->NeedRest().error = FormatErrorInfo(std::move(*error));
    }
    return Event(record.release());
}

bool EventAccess::IsShort(int length) noexcept
{
    return length <= kMaxShortUnits;
}

Event EventAccess::OfMessage(TString&& text, TError::ErrorInfo* error)
{
    if (IsShort(text.length())) {
        return OfMessage(text.constData(), text.length(), error);
    }
    Record::Pointer record = Record::Make(TString(MessageKey()));
    record->rest->value = std::move(text);
    return Finish(std::move(record), error);
}

Event EventAccess::OfMessage(char16_t const* units, int length, TError::ErrorInfo* error)
{
    if (!IsShort(length)) {
        return OfMessage(TString(units, length), error);
    }
    return Finish(Record::Make(Record::ShortMessage{units, length}), error);
}

Event EventAccess::OfPairs(TString&& key, TextMap const& pairs, TError::ErrorInfo* error)
{
    Record::Pointer record = Record::Make(std::move(key));
    record->rest->value = ToPairs(pairs);
    return Finish(std::move(record), error);
}

Event EventAccess::OfValue(TString const& key, std::shared_ptr<Value>&& value,
                           TError::ErrorInfo* error)
{
    Record::Pointer record = Record::Make(TString(key));
    record->rest->value = std::move(value);
    return Finish(std::move(record), error);
}

Event::Event(TString const& key, std::shared_ptr<Value> value, ActivityInfo&& activity)
{
    Record::Pointer record = Record::Make(TString(key), activity);
    record->rest->value = std::move(value);
    m_record = record.release();
}

Event::Event(TString const& key, std::shared_ptr<Value> value)
    : Event(EventAccess::OfValue(key, std::move(value), nullptr))
{}

Event::Event(TString const& key, std::shared_ptr<Value> value, TError::ErrorInfo&& error)
    : Event(EventAccess::OfValue(key, std::move(value), &error))
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

void Event::Release(Record* record) noexcept
{
    // A record with one owner is not counted down: nobody else can take it any more.
    if (record->references.load(std::memory_order_acquire) == 1 ||
        record->references.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        Record::Delete()(record);
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
    return EventAccess::RecordOf(*this).GetKey();
}

std::shared_ptr<Value> Event::GetValue() const
{
    return EventAccess::RecordOf(*this).GetValue();
}

std::shared_ptr<Value> Event::GetLocation() const noexcept
{
    return EventAccess::RecordOf(*this).GetRest().location;
}

std::shared_ptr<Value> Event::GetActivity() const noexcept
{
    return EventAccess::RecordOf(*this).GetRest().activity;
}

std::shared_ptr<Value> Event::GetError() const
{
    return EventAccess::RecordOf(*this).GetRest().error;
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
