/// The texts of an activity, shared by the records made in it.

#pragma once

#include "korcoreplatform/main/string/TString.h"

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

namespace TLog {

/// Thread safety: immutable.
class AttributeSet
{
public:
    using Texts = std::unordered_map<TString, TString>;
    using Pointer = std::shared_ptr<AttributeSet const>;

    explicit AttributeSet(Texts texts);

    Texts const& GetTexts() const noexcept { return m_texts; }

    /// The pairs as a line contains them, in the order of their names, each followed by a comma.
    std::string_view GetJson() const noexcept { return m_json; }

    /// The set of these texts. Records that a thread makes one after the other share a set while
    /// the texts stay.
    /// Throws: `std::bad_alloc`.
    static Pointer Find(TString const& session, TString const& request, TString const& traceId,
                        TString const& user, TString const& site);

    // These two live as long as the process, and to copy their pointers counts nothing.

    static Pointer OfPlaceholder(); ///< Every text is `Placeholder()`.
    static Pointer Empty();         ///< Without texts.

    static TString const& Placeholder(); ///< What a text is where no host supplies it.

private:
    Texts m_texts;
    std::string m_json;
};

} // namespace TLog
