/// What a log record holds, for the parts of the library that make and write records.

#pragma once

#include "korcoreplatform/main/core/logging/AttributeSet_p.h"
#include "korcoreplatform/main/core/logging/Event.h"
#include "korcoreplatform/main/core/logging/LogItem_p.h"
#include "korcoreplatform/main/core/logging/Value.h"
#include "korcoreplatform/main/string/TString.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <variant>
#include <vector>

namespace TLog {

/// A value that is made when it is first asked for. All who ask get the same one.
///
/// Thread safety: may be asked from several threads at once.
template <class Kind>
class MadeOnce
{
public:
    MadeOnce() = default;
    MadeOnce(MadeOnce const&) = delete;
    MadeOnce& operator=(MadeOnce const&) = delete;
    ~MadeOnce() { delete m_made.load(std::memory_order_relaxed); }

    template <class Make>
    std::shared_ptr<Kind> Get(Make const& make) const
    {
        // Pairs with the release of the thread whose value was installed.
        Pointer const* made = m_made.load(std::memory_order_acquire);
        if (made == nullptr) {
            auto mine = std::make_unique<Pointer const>(make());
            if (m_made.compare_exchange_strong(made, mine.get(), std::memory_order_release,
                                               std::memory_order_acquire)) {
                made = mine.release();
            }
        }
        return *made;
    }

private:
    using Pointer = std::shared_ptr<Kind>;

    mutable std::atomic<Pointer const*> m_made{nullptr};
};

using TextPairs = std::vector<std::pair<TString, TString>>; ///< In any order, no name twice.

/// The heap block of a record. Texts and pairs of texts stay what they are: the writer of lines
/// reads them in place, and values are made of them only for those who ask. The memory goes round,
/// see `RecordMemory`; the fewer cache lines a record takes, the sooner the writer has it.
///
/// Thread safety: immutable once the first `Event` has it, but for its count; while it stands in a
/// queue, the queue's part of it belongs to the queue.
struct __attribute__((visibility("hidden"))) Event::Record : LogItem
{
    struct Delete
    {
        void operator()(Record* record) const noexcept;
    };
    using Pointer = std::unique_ptr<Record, Delete>;

    /// Of all records but short messages; of those only with a context, an error, a location or an
    /// activity.
    struct Rest
    {
        TString key; ///< Of others than short messages.
        std::variant<std::shared_ptr<Value>, TString, TextPairs> value; ///< The same.
        std::shared_ptr<Value> location;
        std::shared_ptr<Value> activity;
        std::shared_ptr<Value> error;
        std::variant<std::shared_ptr<Object>, TextPairs> context;
        MadeOnce<Object> madeContext; ///< Of pairs.
    };

    /// A message of up to `kMaxShortUnits` units.
    struct ShortMessage
    {
        char16_t const* units;
        int length;
    };

    /// A record without error, in the activity of the moment or in a given one. `Content` is a
    /// `ShortMessage`, or the key, as a TString, of a record without a value.
    /// Throws: what the host's activity factory throws.
    template <class Content>
    static Pointer Make(Content&& content);
    template <class Content>
    static Pointer Make(Content&& content, ActivityInfo const& info);

    /// A record for events that were moved from; never destroyed.
    static Record const& MovedFrom();

    TString const& GetKey() const noexcept;
    std::shared_ptr<Value> GetValue() const;
    std::shared_ptr<Object> GetContext() const;
    static Rest const& NoRest() noexcept; ///< An empty one.
    Rest const& GetRest() const noexcept;
    Rest& NeedRest(); ///< Makes it when it is not there.

    std::string_view PlainText() const noexcept
    {
        return {reinterpret_cast<char const*>(this + 1), tailLength};
    }
    std::u16string_view Text() const noexcept
    {
        return {reinterpret_cast<char16_t const*>(this + 1), tailLength};
    }

    mutable std::atomic<std::uint32_t> references{1};
    std::uint32_t processId;
    EventTimestamp timestamp;
    std::uint64_t threadId;
    AttributeSet::Pointer attributes; ///< Never null.
    Rest* rest = nullptr;             ///< Owned; the tail or elsewhere. Null: nothing of it.
    MadeOnce<Value> madeValue;        ///< Of a text or pairs.

private:
    struct Origin;

    Record(RecordTail what, std::size_t length, Origin&& origin) noexcept;
    ~Record();

    static inline Pointer Allocate(ShortMessage message, Origin&& origin);
    static Pointer Allocate(TString&& key, Origin&& origin);

    std::size_t Bytes() const noexcept; ///< Of the block.

    /// Takes the logging context of the thread, then the pairs of `extra`, which may be null.
    inline void TakeContext(std::shared_ptr<Object> const& extra);
    void TakeContext(std::shared_ptr<std::unordered_map<TString, TString>> const& ofThread,
                     std::shared_ptr<Object> const& extra);
};

/// Makes records of texts and looks into records.
class __attribute__((visibility("hidden"))) EventAccess
{
public:
    using Record = Event::Record;

    EventAccess() = delete;

    /// The record with the key "msg" and a text literal as its value. `error` may be null.
    /// Throws: what the host's activity factory throws.
    static Event OfMessage(TString&& text, TError::ErrorInfo* error);

    /// The same for a text that is only read.
    static Event OfMessage(char16_t const* units, int length, TError::ErrorInfo* error);

    /// The record whose value is `Object::Make(pairs)`. `error` may be null.
    /// Throws: what the host's activity factory throws.
    static Event OfPairs(TString&& key, std::unordered_map<TString, TString> const& pairs,
                         TError::ErrorInfo* error);

    /// Whether a message of `length` units is copied behind its record; a longer one keeps a block
    /// of its own.
    static bool IsShort(int length) noexcept;

    static Record const& RecordOf(Event const& event) noexcept
    {
        return event.m_record != nullptr ? *event.m_record : Record::MovedFrom();
    }

    /// Takes the record out of the event when no other event has it; null otherwise.
    static Record* TakeUnshared(Event& event) noexcept
    {
        // Pairs with the releases of the events that shared it before.
        bool const isUnshared = event.m_record != nullptr &&
                                event.m_record->references.load(std::memory_order_acquire) == 1;
        return isUnshared ? std::exchange(event.m_record, nullptr) : nullptr;
    }

    /// The event of a record that `TakeUnshared` gave.
    static Event Adopt(Record* record) noexcept { return Event(record); }

private:
    friend class Event;

    static Event OfValue(TString const& key, std::shared_ptr<Value>&& value,
                         TError::ErrorInfo* error);
    static inline Event Finish(Record::Pointer record, TError::ErrorInfo* error);
};

} // namespace TLog
