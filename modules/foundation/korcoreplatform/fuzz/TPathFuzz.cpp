// Any text: a path's elements are the same whichever way they are reached and make up the path, its
// parts fit together, and joining and ordering do what the texts say.

#include "korcoreplatform/main/core/files/TPath.h"

#include "korcoreplatform/fuzz/support/FuzzInput.h"

#include <vector>

namespace {

void CheckElements(TPath const& path)
{
    std::vector<TString> const elements = path.toVector();
    Require(path.size() == static_cast<int>(elements.size()));
    TPath::iterator i = path.begin();
    for (TString const& element : elements) {
        Require(*i == element && i.get() == element && !element.isEmpty());
        TPath::iterator const next = i.next();
        Require(next.prev() == i && *next.prev() == element);
        TPath::iterator back = next;
        Require(back-- == next && back == i && *back == element);
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
    TPath const name = path.Filename();
    Require(text.startsWith(path.RootPath()) && text.endsWith(name));
    Require(text.startsWith(path.Parent()));
    Require(path.IsEmpty() || path.Parent().NativeString().length() < text.length());
    Require((path.HasExtension() ? path.Stem() + u'.' + path.Extension() : path.Stem()) == name);
    Require(TPath(path).RemoveExtension() == path || path.HasExtension());
    Require(!path.HasFilename() || path.FilenameIndex() + TString(name).length() == text.length());
}

void CheckOrder(TPath const& a, TPath const& b)
{
    Require((a < b) == (a.GenericString() < b.GenericString()));
    Require((a == b) == (a.Compare(b) == 0) && (a == b) == (b == a));
    TString const joined = a / b;
    Require(joined == TString(TPath(a).Append(b)));
    Require(joined.startsWith(TString(a)) && joined.endsWith(TString(b)));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    for (auto const& units : {Latin1(data, size), Units(data, size)}) {
        TString const text = TString::fromStdU16String(units);
        TPath const path(text);
        Require(TString(path) == text || TString(path) + u"/" == text);
        for (TPath const& each : {TPath::MakePath(text), path, TPath::fromWindows(text)}) {
            CheckElements(each);
            CheckParts(each);
            CheckOrder(each, each.Filename());
            CheckOrder(each.Parent(), TPath::fromWindows(text));
        }
    }
    return 0;
}
