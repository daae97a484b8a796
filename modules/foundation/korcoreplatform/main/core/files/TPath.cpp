#include "korcoreplatform/main/core/files/TPath.h"

#include "korcoreplatform/main/core/files/PathText_p.h"
#include "korsys/main/error/KorErrorsError.h"
#include "korsys/main/error/ThrowError.h"
#include "korsys/main/system/TPathCore.h"
#include "korsys/main/system/TStackWalker.h"
#include "korsys/main/text/TCType.h"
#include "korsys/main/text/THash.h"
#include "korsys/main/text/UnitSearch_p.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>

namespace {

using PathText::Units;

constexpr char16_t kNoDriveLetter = 0xFFFF;

[[noreturn]] void Throw(char16_t const* message, KorvelError (*makeError)())
{
    ThrowError<TPath::Exception>(TString(message), makeError, TError::ErrorSource::Internal, false);
}

void CopyUnits(char16_t* to, char16_t const* from, int n)
{
    std::memcpy(to, from, static_cast<std::size_t>(n) * sizeof(char16_t));
}

char16_t Generic(char16_t unit)
{
    return unit == u'\\' ? u'/' : unit;
}

} // namespace

TPath::TPath(TPathCore const& path) : m_text(path.GenericString()) {}

TPath TPath::MakePath(TString const& text)
{
    TPath path;
    path.m_text = text;
    return path;
}

TPath TPath::fromWindows(TString const& text)
{
    return MakePath(text).GenericString();
}

TPath TPath::fromVector(std::vector<TString> const& elements)
{
    TPath path;
    for (TString const& element : elements) {
        path.Append(element);
    }
    return path;
}

std::vector<TString> TPath::toVector() const
{
    Units const units(m_text);
    TString const generic = GenericString();
    std::vector<TString> elements;
    elements.reserve(static_cast<std::size_t>(size()));
    for (int i = 0; i < units.length;) {
        int const n = units.ElementLengthAt(i);
        elements.emplace_back(generic.constData() + i, n);
        i = units.BehindSeparatorAt(i + n);
    }
    return elements;
}

TString TPath::GenericString() const
{
    TString text = m_text;
    text.replace(u'\\', u'/');
    return text;
}

TPathCore TPath::toTPathCore() const
{
    return TPathCore(m_text);
}

void TPath::Swap(TPath& other)
{
    m_text.swap(other.m_text);
    other.StripTrailingSeparator();
}

/// Every text ends in "/" here. The roots that do so are as long as their root name and one unit.
void TPath::StripLastUnit()
{
    int const allButLast = m_text.length() - 1;
    if (Units(m_text).RootNameLength() != allButLast) {
        m_text.truncate(allButLast);
    }
}

// Joining

bool TPath::NeedsSeparatorBefore(TPath const& other) const noexcept
{
    return !IsEmpty() && !other.IsEmpty() && !HasTrailingSeparator() &&
           !other.HasLeadingSeparator();
}

TPath& TPath::Append(TPath const& other)
{
    if (!NeedsSeparatorBefore(other)) {
        return Concat(other);
    }
    int const n = other.m_text.length();
    char16_t* const to = m_text.extend(n + 1);
    *to = u'/';
    // Read only now: the other may be this path, whose units have moved.
    CopyUnits(to + 1, other.m_text.constData(), n);
    return *this;
}

TPath TPath::operator/(TPath const& other) const&
{
    if (IsEmpty() || other.IsEmpty()) {
        return IsEmpty() ? other : *this;
    }
    Units const left(m_text);
    Units const right(other.m_text);
    int const separators = NeedsSeparatorBefore(other) ? 1 : 0;
    std::int64_t const n = std::int64_t(left.length) + separators + right.length;
    TPath joined;
    char16_t* to =
        joined.m_text.resizeForOverwrite(static_cast<int>(std::min<std::int64_t>(n, INT32_MAX)));
    CopyUnits(to, left.at, left.length);
    std::fill_n(to + left.length, separators, u'/');
    CopyUnits(to + left.length + separators, right.at, right.length);
    return joined;
}

TPath& TPath::Concat(TPath const& other)
{
    m_text.append(other.m_text);
    return *this;
}

TPath TPath::operator+(TPath const& other) const
{
    return TPath(*this).Concat(other);
}

// Taking apart

int TPath::RootNameLength() const noexcept
{
    return Units(m_text).RootNameLength();
}

TPath TPath::RootName() const
{
    return Part(0, RootNameLength());
}

int TPath::RootDirectoryIndex() const noexcept
{
    return Units(m_text).RootDirectoryIndex();
}

TPath TPath::RootDirectory() const
{
    return HasRootDirectory() ? TPath(u"/", 1) : TPath();
}

TPath TPath::RootPath() const
{
    Units const units(m_text);
    int const name = units.RootNameLength();
    return Part(0, units.IsSeparator(name) ? name + 1 : name);
}

int TPath::FilenameIndex() const noexcept
{
    return Units(m_text).FilenameIndex();
}

TPath TPath::Filename() const
{
    Units const units(m_text);
    int const index = units.BehindLastSeparator();
    return Part(index, units.length - index);
}

int TPath::ExtensionIndex() const noexcept
{
    int const dot = Units(m_text).ExtensionDot();
    return dot < 0 ? -1 : dot + 1;
}

TPath TPath::Extension() const
{
    Units const units(m_text);
    int const dot = units.ExtensionDot();
    return dot < 0 ? TPath() : TPath(units.at + dot + 1, units.length - dot - 1);
}

TPath TPath::Stem() const
{
    Units const units(m_text);
    int const begin = units.BehindLastSeparator();
    int const dot = units.ExtensionDot();
    return Part(begin, (dot < 0 ? units.length : dot) - begin);
}

bool TPath::IsDots() const noexcept
{
    Units const units(m_text);
    char16_t const* const name = units.at + units.BehindLastSeparator();
    std::size_t const n = static_cast<std::size_t>(units.at + units.length - name);
    return n <= 2 && std::u16string_view(u"..", n) == std::u16string_view(name, n) && n > 0;
}

TPath TPath::Parent() const
{
    return Part(0, Units(m_text).ParentLength());
}

bool TPath::HasParentPath() const noexcept
{
    return Units(m_text).ParentLength() > 0;
}

TPath& TPath::RemoveFilename()
{
    Units const units(m_text);
    int const filename = units.FilenameIndex();
    if (filename >= 0) {
        m_text.truncate(units.LengthBefore(filename));
    }
    return *this;
}

TPath& TPath::RemoveExtension()
{
    int const dot = Units(m_text).ExtensionDot();
    if (dot >= 0) {
        m_text.truncate(dot);
    }
    return *this;
}

TPath& TPath::ReplaceExtension(TString const& extension)
{
    RemoveExtension();
    if (!extension.isEmpty()) {
        m_text.append(u'.').append(extension);
    }
    return *this;
}

// UNC paths

bool TPath::IsUNC() const noexcept
{
    return Units(m_text).IsUNC();
}

int TPath::UNCShareNameIndex() const noexcept
{
    return RootDirectoryIndex() + 1;
}

TString TPath::UNCShareName() const
{
    int const begin = UNCShareNameIndex();
    return IsUNC() ? m_text.mid(begin, Units(m_text).SeparatorOrEnd(begin) - begin) : TString();
}

int TPath::UNCObjectNameIndex() const noexcept
{
    return Units(m_text).Separator(UNCShareNameIndex());
}

TPath TPath::UNCObjectName() const
{
    int const begin = UNCObjectNameIndex();
    return IsUNC() && begin >= 0 ? Part(begin, m_text.length() - begin) : TPath();
}

bool TPath::HasUNCObjectName() const noexcept
{
    return IsUNC() && UNCObjectNameIndex() >= 0;
}

bool TPath::IsAdminShare() const noexcept
{
    return AdminShareDriveLetter() != kNoDriveLetter;
}

char16_t TPath::AdminShareDriveLetter() const noexcept
{
    Units const units(m_text);
    int const begin = UNCShareNameIndex();
    bool const isAdminShare = units.IsUNC() && units.SeparatorOrEnd(begin) == begin + 2 &&
                              TCType::isAlpha(units.at[begin]) && units.at[begin + 1] == u'$';
    return isAdminShare ? units.at[begin] : kNoDriveLetter;
}

bool TPath::IsSMB() const
{
    Units const units(m_text);
    return (units.length >= 3 && (units.StartsWith(u"//") || units.StartsWith(u"\\\\"))) ||
           (units.length >= 6 && TString::compareN(units.at, u"smb://", 6, caseSensitivity()) == 0);
}

bool TPath::IsExtendedLength() const noexcept
{
    return Units(m_text).StartsWith(u"//?/");
}

// Comparing

int TPath::Compare(TPath const& other) const
{
    return m_text == other.m_text ? 0 : m_text.compare(other.m_text, caseSensitivity());
}

bool operator<(TPath const& a, TPath const& b)
{
    Units const left(a.m_text);
    Units const right(b.m_text);
    int const shorter = std::min(left.length, right.length);
    for (int i = 0; i < shorter; ++i) {
        i += UnitSearch::Mismatch(left.at + i, right.at + i, shorter - i);
        char16_t const l = Generic(left.at[i]);
        char16_t const r = Generic(right.at[i]);
        if (i < shorter && l != r) {
            return l < r;
        }
    }
    return left.length < right.length;
}

std::size_t std::hash<TPath>::operator()(TPath const& path) const
{
    TString const text = path.GenericString().toLower();
    return THash32(text.constData(), text.lengthInBytes(), 0xDEADBEEF);
}

// Elements

int TPath::size() const
{
    Units const units(m_text);
    int count = 0;
    for (int i = 0; i < units.length; ++count) {
        i = units.BehindSeparatorAt(i + units.ElementLengthAt(i));
    }
    return count;
}

TString TPath::front() const
{
    return *begin();
}

TString TPath::back() const
{
    return *end().prev();
}

int TPath::ElementLengthAt(int position) const
{
    if (position < 0 || position >= m_text.length()) {
        Throw(u"Element position out of range.", &KorErrorsError::AutoGen_0xE27C2B2D);
    }
    return Units(m_text).ElementLengthAt(position);
}

int TPath::SeparatorLengthAt(int position) const
{
    if (position < 0 || position >= m_text.length()) {
        Throw(u"Separator position out of range.", &KorErrorsError::AutoGen_0xDE3B1FC7);
    }
    return Units(m_text).SeparatorLengthAt(position);
}

// What is thrown

TPath::Exception::Exception(TString const& message, TError::ErrorInfo const& errorInfo,
                            bool captureStack)
    : KorvelException(message, errorInfo)
{
    TStackWalker walker;
    if (captureStack && walker.GenerateCallstack()) {
        for (std::string const& frame : walker.GetCollected()) {
            StackMessage(TStringCore(frame.c_str()));
        }
    }
}

TPath::Exception::~Exception() = default;

TPath::Exception* TPath::Exception::Clone() const
{
    return new Exception(*this);
}

void TPath::Exception::Throw() const
{
    throw Exception(*this);
}
