// Any text: a path's elements are the same whichever way they are reached and make up the path, its
// parts fit together, and joining and ordering do what the texts say.

#include "korcoreplatform/main/core/files/TPath.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

void Require(bool condition)
{
    if (!condition) {
        std::abort();
    }
}

void CheckElements(TPath const& path)
{
    std::vector<TString> const elements = path.toVector();
    Require(path.size() == static_cast<int>(elements.size()));
    TPath::iterator i = path.begin();
    for (TString const& element : elements) {
        Require(*i == element && i.get() == element && !element.isEmpty());
        TPath::iterator const next = i.next();
        Require(next.prev() == i && *next.prev() == element);
        Require(++i == next && *i == *next);
    }
    Require(i == path.end());
    TString const text = path;
    bool const isPlain = path.GenericString() == text && text.indexOf(u"//", 1) < 0 &&
                         path.IsUNC() == text.startsWith(u"//") &&
                         path.HasRootName() <= path.HasRootDirectory() &&
                         TString(TPath(text)) == text;
    Require(!isPlain || TString(TPath::fromVector(elements)) == text);
}

void CheckParts(TPath const& path)
{
    TString const text = path;
    Require(text.startsWith(path.RootPath()));
    Require(text.endsWith(path.Filename()) && text.startsWith(path.Parent()));
    Require(path.IsEmpty() || path.Parent().NativeString().length() < text.length());
    TPath const name = path.Filename();
    Require(path.HasExtension() ? path.Stem() + u'.' + path.Extension() == name
                                : path.Stem() == name);
    Require(TPath(path).RemoveExtension() == path || path.HasExtension());
    Require(!path.HasFilename() || path.FilenameIndex() + TString(name).length() == text.length());
}

void CheckOrder(TPath const& a, TPath const& b)
{
    Require((a < b) == (a.GenericString() < b.GenericString()));
    Require((a == b) == (a.Compare(b) == 0) && (a == b) == (b == a));
    TPath const joined = a / b;
    TPath appended = a;
    Require(TString(joined) == TString(appended.Append(b)));
    Require(TString(joined).startsWith(TString(a)) && TString(joined).endsWith(TString(b)));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    // The bytes as Latin-1, where separators and colons are frequent, and as UTF-16 text.
    std::u16string units(size / 2, u'\0');
    if (!units.empty()) { // `data` may be null when it is empty
        std::memcpy(units.data(), data, units.size() * sizeof(char16_t));
    }
    char const* const bytes = reinterpret_cast<char const*>(data);
    TString const latin1 = TString::fromLatin1(bytes, static_cast<int>(size));
    for (TString const& text : {latin1, TString::fromStdU16String(units)}) {
        TPath const verbatim = TPath::MakePath(text);
        TPath const path(text);
        Require(TString(path) == text || TString(path) + u"/" == text);
        for (TPath const& each : {verbatim, path, TPath::fromWindows(text)}) {
            CheckElements(each);
            CheckParts(each);
            CheckOrder(each, each.Filename());
            CheckOrder(each.Parent(), TPath::fromWindows(text));
        }
    }
    return 0;
}
