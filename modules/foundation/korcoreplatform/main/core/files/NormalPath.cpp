#include "korcoreplatform/main/core/files/PathFunctions.h"
#include "korcoreplatform/main/core/files/PathText_p.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

namespace {

/// The text of a normal path, made element by element. It stays a beginning of the original as long
/// as it is one: a normal path is never copied.
class NormalText
{
public:
    /// The first `length` units of the original are taken as they are, and stay for good when they
    /// end with a root directory.
    NormalText(TString const& original, int length, bool isRooted)
        : m_original(original), m_units(original.constData()), m_length(length),
          m_fixedLength(isRooted ? length : 0), m_isRooted(isRooted)
    {}

    /// Takes the element that is at `begin` in the original.
    void Take(int begin, int length)
    {
        char16_t const* const element = m_original.constData() + begin;
        if (length == 1 && element[0] == u'.') {
            return;
        }
        if (length == 2 && element[0] == u'.' && element[1] == u'.') {
            TakeUp(begin);
        } else {
            Append(begin, length);
        }
    }

    bool IsOriginal() const { return m_own == nullptr && m_length == m_original.length(); }

    TString Text() &&
    {
        return m_own == nullptr ? m_original.left(m_length) : std::move(m_text.truncate(m_length));
    }

private:
    void TakeUp(int begin)
    {
        if (m_length > m_fixedLength) {
            RemoveLast();
        } else if (!m_isRooted) {
            Append(begin, 2);
            m_fixedLength = m_length;
        }
    }

    void Append(int begin, int length)
    {
        bool const needsSeparator = m_length > 0 && m_units[m_length - 1] != u'/';
        int const at = m_length + (needsSeparator ? 1 : 0);
        if (m_own == nullptr && at != begin) {
            BecomeOwn();
        }
        if (m_own != nullptr) {
            m_own[m_length] = u'/'; // the element goes over it when there is one already
            std::memcpy(m_own + at, m_original.constData() + begin,
                        static_cast<std::size_t>(length) * sizeof(char16_t));
        }
        m_length = at + length;
    }

    void RemoveLast()
    {
        while (m_length > m_fixedLength && m_units[m_length - 1] != u'/') {
            --m_length;
        }
        if (m_length > m_fixedLength) {
            --m_length;
        }
    }

    void BecomeOwn()
    {
        m_own = m_text.resizeForOverwrite(m_original.length() + 1); // "C:a" becomes "C:/a"
        std::memcpy(m_own, m_units, static_cast<std::size_t>(m_length) * sizeof(char16_t));
        m_units = m_own;
    }

    TString const& m_original;
    TString m_text;
    char16_t* m_own = nullptr; ///< The units of `m_text` once they are needed.
    char16_t const* m_units;   ///< The result so far: `m_own`, or a beginning of the original.
    int m_length;
    int m_fixedLength; ///< The root directory, or the ".." that the text begins with.
    bool m_isRooted;
};

/// What `NormalPath` is defined as. Elements have "/" for a backslash, so that some are taken for
/// what they are not, "\" for the root directory: this is for texts with a backslash.
TPath NormalPathByElements(TPath const& path)
{
    std::vector<TString> kept;
    for (TString& element : path.toVector()) {
        if (element == u"..") {
            if (kept.empty() || kept.back() == u"..") {
                kept.push_back(std::move(element));
            } else if (kept.back() != u"/") {
                kept.pop_back();
            }
        } else if (element != u".") {
            kept.push_back(std::move(element));
        }
    }
    return TPath::fromVector(kept);
}

/// `TPath::MakePath` without a copy, where making a path the other way changes nothing.
TPath Verbatim(TString&& text)
{
    return text.endsWith(u'/') ? TPath::MakePath(text) : TPath(std::move(text));
}

/// The root of a text without backslash.
struct Root
{
    int length;        ///< The elements that are no part of it begin here.
    int normalLength;  ///< The units of the text that begin the normal form.
    bool hasDirectory; ///< A root without directory, "C:", goes with a ".." like any element.
};

Root RootOf(PathText::Units const& text)
{
    int const nameLength = text.RootNameLength();
    bool const hasDirectory = text.IsSeparator(nameLength);
    int const length = nameLength + (hasDirectory ? 1 : 0);
    // A server without name, as in "///share", is made a path of its own: "/".
    bool const isNameless = nameLength == 2 && text.IsSeparator(0);
    return {length, isNameless ? nameLength : length, hasDirectory};
}

/// Whether one of the four units at `at` is a backslash, or a "/" with a "." or a "/" behind it.
/// The answer may be true by mistake, never false.
bool MayBeOdd(PathText::Units const& text, int at)
{
    using PathText::kOneInEachUnit;
    static_assert((u'.' | 1) == u'/', "one comparison finds both");
    std::uint64_t const word = PathText::WordAt(text.at + at);
    std::uint64_t const slash = word ^ kOneInEachUnit * u'/';
    std::uint64_t const next =
        (PathText::WordAt(text.at + at + 1) | kOneInEachUnit) ^ kOneInEachUnit * u'/';
    return (PathText::Marks(slash | next, 0) | PathText::Marks(word, u'\\')) != 0;
}

/// Whether a text is certain to be normal, seen without looking at its elements. Root names and
/// hidden files are left to a closer look.
bool IsPlain(PathText::Units const& text, int rootLength)
{
    int const last = text.length - PathText::kWordUnits;
    if (last < 0 || rootLength > 1 || text.at[rootLength] == u'.' || text.IsSeparator(rootLength) ||
        text.IsSeparator(text.length - 1)) {
        return false;
    }
    for (int at = rootLength; at < last; at += PathText::kWordUnits) {
        if (MayBeOdd(text, at)) {
            return false;
        }
    }
    return !MayBeOdd(text, last);
}

} // namespace

TPath NormalPath(TPath const& path)
{
    TString text = path.NativeString();
    PathText::Units const units(text);
    Root const root = RootOf(units);
    if (IsPlain(units, root.length)) {
        return TPath(std::move(text));
    }
    if (text.contains(u'\\')) {
        return NormalPathByElements(path);
    }
    NormalText normal(text, root.normalLength, root.hasDirectory);
    for (int at = root.length; at < units.length; ++at) {
        int const begin = at;
        while (at < units.length && !units.IsSeparator(at)) {
            ++at;
        }
        if (at > begin) {
            normal.Take(begin, at - begin);
        }
    }
    return Verbatim(normal.IsOriginal() ? std::move(text) : std::move(normal).Text());
}
