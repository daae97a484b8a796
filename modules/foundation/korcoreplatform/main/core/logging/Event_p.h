/// What a log record holds, for the parts of the library that make and write records.

#pragma once

#include "korcoreplatform/main/core/logging/AttributeSet_p.h"
#include "korcoreplatform/main/core/logging/Event.h"
#include "korcoreplatform/main/core/logging/Value.h"
#include "korcoreplatform/main/string/TString.h"

#include <atomic>
#include <cstdint>
#include <memory>
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

/// The one heap block of a record. Texts and pairs of texts stay what they are: the writer of lines
/// reads them in place, and values are made of them only for those who ask.
///
/// Thread safety: immutable once the first `Event` has it, but for its count.
struct __attribute__((visibility("hidden"))) Event::Record
{
    Record(TString&& recordKey, EventTimestamp time, std::uint32_t process, std::uint64_t thread,
           AttributeSet::Pointer&& activityTexts) noexcept
        : timestamp(time), threadId(thread), processId(process),
          attributes(std::move(activityTexts)), key(std::move(recordKey))
    {}

    /// A record without value and error.
    static std::unique_ptr<Record> Make(TString&& key); ///< In the activity of the moment.
    static std::unique_ptr<Record> Make(TString&& key, ActivityInfo const& activity);

    std::shared_ptr<Value> GetValue() const;
    std::shared_ptr<Object> GetContext() const;

    /// Takes the logging context of the thread, then the pairs of `extra`, which may be null.
    void TakeContext(std::shared_ptr<Object> const& extra);

    mutable std::atomic<std::uint32_t> references{1};
    EventTimestamp timestamp;
    std::uint64_t threadId;
    std::uint32_t processId;
    AttributeSet::Pointer attributes; ///< Never null.
    TString key;
    std::variant<std::shared_ptr<Value>, TString, TextPairs> value;
    std::shared_ptr<Value> location;
    std::shared_ptr<Value> activity;
    std::shared_ptr<Value> error;
    std::variant<std::shared_ptr<Object>, TextPairs> context;
    MadeOnce<Value> madeValue;    ///< Of a text or pairs.
    MadeOnce<Object> madeContext; ///< Of pairs.
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

    /// The record whose value is `Object::Make(pairs)`. `error` may be null.
    /// Throws: what the host's activity factory throws.
    static Event OfPairs(TString&& key, std::unordered_map<TString, TString> const& pairs,
                         TError::ErrorInfo* error);

    static Record const& RecordOf(Event const& event) noexcept;

private:
    friend class Event;

    template <class Content>
    static Event Make(TString&& key, Content&& content, TError::ErrorInfo* error);
};

} // namespace TLog
