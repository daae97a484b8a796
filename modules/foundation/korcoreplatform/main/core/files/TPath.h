/// File paths as values: taking them apart, putting them together, walking through them.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/string/TString.h"
#include "korsys/main/error/KorvelException.h"

#include <cstddef>
#include <functional>
#include <iterator>
#include <vector>

class TPathCore;

/// The text of a path, with "/" as separator. Every answer is worked out from the text; the file
/// system is never asked, and nothing but the text is kept.
///
///     TPath const path = TPath(u"/var/log") / u"app.log";
///     path.Parent();    // /var/log
///     path.Extension(); // log
///     for (TString const& element : path) { ... } // "/", "var", "log", "app.log"
///
/// Four kinds of root keep their meaning on every system: "/", a drive ("C:", a letter and a
/// colon), a UNC server ("//server"), and "//?/" in front of either a drive or "UNC/". The drive or
/// the server is the root name, a "/" right behind it or at the start the root directory.
/// A backslash is an ordinary character but for `fromWindows`, `GenericString`, `operator<`, the
/// hash, and the elements that an iterator delivers.
///
/// A path made from text loses one "/" at its end, unless the text is just a root. Joining,
/// concatenating, `MakePath` and the parts of a path keep what they have.
///
/// Positions and lengths are code units; a position that is not there is -1. Growing a path may
/// throw what growing a `TString` throws.
///
/// Thread safety: one object may be read from several threads; a write needs it alone.
class KORCOREPLATFORM_EXPORT TPath
{
public:
    class Exception;
    class iterator;

    TPath() noexcept = default; ///< The empty path.
    TPath(TPath const&) noexcept = default;
    TPath(TPath&&) noexcept = default;
    TPath(char16_t const* text) : m_text(text) { StripTrailingSeparator(); }
    TPath(TString const& text) : m_text(text) { StripTrailingSeparator(); }
    TPath(TString&& text) : m_text(static_cast<TString&&>(text)) { StripTrailingSeparator(); }
    TPath(TPathCore const& path); ///< The text as it is, even with a "/" at its end.
    ~TPath() = default;

    TPath& operator=(TPath const&) noexcept = default;
    TPath& operator=(TPath&&) noexcept = default;
    TPath& Assign(TPath const& other) noexcept { return *this = other; }

    /// The path with exactly this text.
    static TPath MakePath(TString const& text);

    /// A path made from text whose separators may be backslashes.
    static TPath fromWindows(TString const& text);

    /// Joins paths made from the texts, as `Append` does. `toVector` gives the elements in order.
    static TPath fromVector(std::vector<TString> const& elements);
    std::vector<TString> toVector() const;

    // The whole text. Paths look the same to this library and to the system, so the native forms
    // are the text itself; the generic form has "/" for every backslash.

    operator TString() const& noexcept { return m_text; }
    operator TString() && noexcept { return static_cast<TString&&>(m_text); }
    TString NativeString() const noexcept { return m_text; }
    TString NativeLongPath() const noexcept { return m_text; }
    TString NativeShortPath() const noexcept { return m_text; }
    TString GenericString() const;
    TPathCore toTPathCore() const;

    static constexpr char16_t nativeSeparatorDEPRECATED() noexcept { return u'/'; }

    /// How `Compare` and `==` look at letters.
    static constexpr TString::CaseSensitivity caseSensitivity() noexcept
    {
        return TString::CaseInsensitive;
    }

    bool IsEmpty() const noexcept { return m_text.isEmpty(); }
    bool empty() const noexcept { return m_text.isEmpty(); }
    void Clear() noexcept { m_text.clear(); }

    /// Takes the other's text as it is; the other takes this one's without one "/" at its end, as
    /// `StripTrailingSeparator` does. A path swapped with itself is just stripped.
    void Swap(TPath& other);

    // Joining

    /// Appends a path behind exactly one more "/", or none when either path is empty or a "/" is
    /// already there on either side. A "/" on both sides stays doubled.
    TPath& Append(TPath const& other);
    TPath& operator/=(TPath const& other) { return Append(other); }
    TPath operator/(TPath const& other) const&;
    TPath operator/(TPath const& other) && { return static_cast<TPath&&>(Append(other)); }

    /// Appends the text alone. `operator+` makes a path of its argument first, which drops one "/"
    /// from the end of a text that is not just a root.
    TPath& Concat(TPath const& other);
    TPath& operator+=(TPath const& other) { return Concat(other); }
    TPath operator+(TPath const& other) const;
    TPath operator+(char16_t other) const { return *this + TPath(TString(other, 1)); }
    TPath operator+(char16_t const* other) const { return *this + TPath(other); }
    TPath operator+(TString const& other) const { return *this + TPath(other); }

    // The root

    int RootNameLength() const noexcept; ///< 0 when there is no root name.
    TPath RootName() const;
    int RootDirectoryIndex() const noexcept;
    TPath RootDirectory() const; ///< "/" or empty.
    TPath RootPath() const;      ///< Name and directory.
    bool HasRootName() const noexcept { return RootNameLength() > 0; }
    bool HasRootDirectory() const noexcept { return RootDirectoryIndex() >= 0; }
    bool HasRootPath() const noexcept { return HasRootName() || HasRootDirectory(); }

    /// A path is absolute when it has a root directory: "C:x" and "//server" are relative.
    bool IsAbsolute() const noexcept { return HasRootDirectory(); }
    bool IsRelative() const noexcept { return !HasRootDirectory(); }

    // The file name is what follows the last "/", or all of a text without one ("C:" too). A text
    // made of separators has none, that of "a/" is empty. Its extension follows its last dot, which
    // must not be one of the dots it begins with: ".profile" has none, that of "a." is empty.

    int FilenameIndex() const noexcept;
    TPath Filename() const;
    int ExtensionIndex() const noexcept; ///< Where it begins, behind the dot.
    TPath Extension() const;
    TPath Stem() const; ///< The file name without the dot and the extension.
    bool HasFilename() const noexcept { return FilenameIndex() >= 0; }
    bool HasExtension() const noexcept { return ExtensionIndex() >= 0; }

    /// Is there a stem that does not begin the text? False for "a.txt"; callers rely on it.
    bool HasStem() const noexcept { return FilenameIndex() > 0; }
    bool IsDots() const noexcept; ///< Is the file name "." or ".."?

    /// The text before the file name and before one "/" in front of it, which stays when it is the
    /// root directory: "/" for "/a", "//server/" for "//server/share", empty for "a", "/" and
    /// "C:/".
    TPath Parent() const;
    bool HasParentPath() const noexcept;

    TPath& RemoveFilename();  ///< Cuts where `Parent` does; just a root stays.
    TPath& RemoveExtension(); ///< Removes the dot too.
    /// Puts "." and `extension` in the place of the extension; removes it when that is empty.
    TPath& ReplaceExtension(TString const& extension);

    bool HasLeadingSeparator() const noexcept { return *m_text.constData() == u'/'; }
    bool HasTrailingSeparator() const noexcept
    {
        int const n = m_text.length();
        return n > 0 && m_text.constData()[n - 1] == u'/';
    }

    /// Removes one "/" from the end of a text that is not just a root.
    void StripTrailingSeparator()
    {
        if (HasTrailingSeparator()) {
            StripLastUnit();
        }
    }

    // UNC paths: "//server/share/object" and "//?/UNC/...". In the second form the root name is
    // "//?" and "UNC" stands in the place of the share. The two index functions count on any path
    // as if it were one.

    bool IsUNC() const noexcept;
    int UNCShareNameIndex() const noexcept;
    TString UNCShareName() const;            ///< Empty for any other path.
    int UNCObjectNameIndex() const noexcept; ///< Where the "/" before the object is.
    TPath UNCObjectName() const;             ///< From that "/" on; empty for any other path.
    bool HasUNCObjectName() const noexcept;

    bool IsAdminShare() const noexcept;              ///< Is the share a letter and "$"?
    char16_t AdminShareDriveLetter() const noexcept; ///< That letter; 0xFFFF when there is none.

    /// Does the text begin with two "/", two backslashes or "smb://", and go on after the two?
    bool IsSMB() const;
    bool IsExtendedLength() const noexcept; ///< Does the text begin with "//?/"?

    // Comparing. The stored texts are compared without case, a backslash is not a "/".

    int Compare(TPath const& other) const; ///< The sign of the result counts.
    bool operator==(TPath const& other) const { return Compare(other) == 0; }
    bool operator!=(TPath const& other) const { return Compare(other) != 0; }

    // Elements: the root name, the root directory, then what stands between separators. Several "/"
    // in a row separate as one does; at the end they separate nothing.

    iterator begin() const;
    iterator end() const;
    int size() const;      ///< Counts the elements.
    TString front() const; ///< Empty when the path is.
    TString back() const;  ///< Throws: as `iterator::prev` when the path is empty.

    /// The length of the element at `position`, which is up to the next "/" wherever it begins.
    /// Throws: `TPath::Exception` with id AutoGen_0xE27C2B2D for a position outside the text.
    int ElementLengthAt(int position) const;

    /// The number of "/" from `position` on; none when the first is the root directory.
    /// Throws: `TPath::Exception` with id AutoGen_0xDE3B1FC7 for a position outside the text.
    int SeparatorLengthAt(int position) const;

private:
    friend struct std::hash<TPath>;
    friend KORCOREPLATFORM_EXPORT bool operator<(TPath const& a, TPath const& b);

    TPath(char16_t const* units, int n) : m_text(units, n) {}

    TPath Part(int from, int n) const
    {
        return n == m_text.length() ? *this : TPath(m_text.constData() + from, n);
    }
    bool NeedsSeparatorBefore(TPath const& other) const noexcept;
    void StripLastUnit();

    TString m_text;
};

static_assert(sizeof(TPath) == sizeof(TString), "a path is its text, nothing else");

/// A position in a path, and the element there.
///
/// The element lies in the iterator: a reference to it is good until the iterator moves or dies,
/// which makes these iterators none for `std::reverse_iterator`. It has "/" for every backslash.
/// A step back walks from the start of the path.
///
/// Ownership: the path is the caller's; it must outlive the iterator, and a change of it ends the
/// use of the iterator.
class KORCOREPLATFORM_EXPORT TPath::iterator
{
public:
    using iterator_category = std::bidirectional_iterator_tag;
    using value_type = TString;
    using difference_type = std::ptrdiff_t;
    using pointer = TString const*;
    using reference = TString const&;

    /// Of no path. Requires: only to be compared, assigned and dereferenced, to an empty element.
    iterator() noexcept = default;

    /// At any position of the path, its length included; null is no path.
    /// Throws: as `get`.
    iterator(TPath const* path, int position) : m_path(path), m_position(position)
    {
        if (path != nullptr && position != path->m_text.length()) {
            ReadElement(position);
        }
    }

    reference operator*() const noexcept { return m_element; }
    pointer operator->() const noexcept { return &m_element; }

    /// The element, read from the path again.
    /// Throws: `TPath::Exception` with id AutoGen_0x6C57764F for a position behind the end,
    /// AutoGen_0xE27C2B2D for a negative one.
    TString get() const;

    /// The iterator one element on.
    /// Throws: `TPath::Exception` with id AutoGen_0x2AFC3482 at the end.
    iterator next() const;

    /// The iterator one element back.
    /// Throws: `TPath::Exception` with id AutoGen_0xA7D4C6D2 at position 0, AutoGen_0xD1461535 when
    /// no element ends before this position.
    iterator prev() const;

    // A step that throws leaves the iterator as it was.

    iterator& operator++();
    iterator operator++(int);
    iterator& operator--();
    iterator operator--(int);

    bool operator==(iterator const& other) const noexcept
    {
        return m_path == other.m_path && m_position == other.m_position;
    }
    bool operator!=(iterator const& other) const noexcept { return !(*this == other); }

private:
    int NextPosition() const;
    int PreviousPosition() const;
    void ReadElement(int position);

    TPath const* m_path = nullptr;
    int m_position = 0;
    TString m_element; ///< Empty at the end.
};

inline TPath::iterator TPath::begin() const
{
    return iterator(this, 0);
}

inline TPath::iterator TPath::end() const
{
    return iterator(this, m_text.length());
}

/// What goes wrong with paths, here and in the functions that take them to the file system.
class KORCOREPLATFORM_EXPORT TPath::Exception : public KorvelException
{
public:
    /// With `captureStack`, the frames of the call stack follow the message, innermost first.
    Exception(TString const& message, TError::ErrorInfo const& errorInfo, bool captureStack);
    Exception(Exception const&) noexcept = default;
    Exception& operator=(Exception const&) noexcept = default;
    ~Exception() override;

    Exception* Clone() const override;
    [[noreturn]] void Throw() const override;
};

/// Orders the generic forms by their code units, so that a backslash is a "/" and case counts:
/// other than `==` does.
KORCOREPLATFORM_EXPORT bool operator<(TPath const& a, TPath const& b);

/// The hash of the generic form in lower case. Paths that `==` takes for one hash alike when their
/// letters are ASCII; those that differ by a backslash only hash alike too.
template <>
struct KORCOREPLATFORM_EXPORT std::hash<TPath>
{
    std::size_t operator()(TPath const& path) const;
};
