// Paths beside those of Boost and the standard library, which hold the same text in bytes.

#include "korcoreplatform/benchmarks/support/PeerTable.h"
#include "korcoreplatform/main/core/files/TPath.h"
#include "korcoreplatform/main/string/TString.h"

#include <boost/filesystem/path.hpp>

#include <filesystem>
#include <string>

namespace {

using PeerTable::Repeat;
using PeerTable::Row;
using BoostPath = boost::filesystem::path;
using StdPath = std::filesystem::path;

struct Sample
{
    char const* name;
    std::string bytes;
};

Sample const kSamples[] = {
    {"short", "/tmp/a.txt"},
    {"60 units", "/home/alex/projects/atlas/src/render/pipeline/shader_set.cpp"},
    {"120 units", "/srv/storage/archive/2024/customers/northwind/documents/contracts/signed/"
                  "scanned/renewal-agreement-final.version.2.pdf"},
};

/// The same question to all three; `ask` takes any of the paths.
template <class Ask>
void ToAll(std::string const& name, double mark, std::string const& bytes, Ask ask)
{
    Row(name, mark)
        .Ours(Repeat([path = TPath(TString(bytes.c_str())), ask] { return ask(path); }))
        .Peer("boost", Repeat([path = BoostPath(bytes), ask] { return ask(path); }))
        .Peer("std", Repeat([path = StdPath(bytes), ask] { return ask(path); }));
}

// Each name is spelled once for our paths and once for the others'.
TPath Filename(TPath const& path)
{
    return path.Filename();
}
TPath Extension(TPath const& path)
{
    return path.Extension();
}
TPath Parent(TPath const& path)
{
    return path.Parent();
}
template <class Path>
Path Filename(Path const& path)
{
    return path.filename();
}
template <class Path>
Path Extension(Path const& path)
{
    return path.extension();
}
template <class Path>
Path Parent(Path const& path)
{
    return path.parent_path();
}

int LengthOf(TString const& element)
{
    return element.length();
}
template <class Path>
int LengthOf(Path const& element)
{
    return static_cast<int>(element.native().size());
}

template <class Path>
int LengthOfElements(Path const& path)
{
    int length = 0;
    for (auto const& element : path) {
        length += LengthOf(element);
    }
    return length;
}

void Construction(Sample const& sample)
{
    std::u16string const units(sample.bytes.begin(), sample.bytes.end());
    std::string const row = std::string("path from text, ") + sample.name;
    Row(row, 1.2)
        .Ours(Repeat([units] { return TPath(units.c_str()); }))
        .Peer("boost", Repeat([bytes = sample.bytes] { return BoostPath(bytes.c_str()); }));
    BoostPath const boostPath(sample.bytes);
    TPath const path(units.c_str());
    Row(std::string("path copy, ") + sample.name, 1.2)
        .Ours(Repeat([path] { return TPath(path); }))
        .Peer("boost", Repeat([boostPath] { return BoostPath(boostPath); }));
    Row(std::string("path from text and copy, ") + sample.name, 1.2)
        .Ours(Repeat([units] {
            TPath const made(units.c_str());
            return TPath(made);
        }))
        .Peer("boost", Repeat([bytes = sample.bytes] {
                  BoostPath const made(bytes.c_str());
                  return BoostPath(made);
              }));
}

/// Without the standard library's path, which takes itself apart whenever it is made.
void Elements(Sample const& sample)
{
    Row(std::string("path elements, ") + sample.name, 0.6)
        .Ours(Repeat(
            [path = TPath(TString(sample.bytes.c_str()))] { return LengthOfElements(path); }))
        .Peer("boost", Repeat([path = BoostPath(sample.bytes)] { return LengthOfElements(path); }));
}

void Joining(Sample const& sample)
{
    TPath const path(TString(sample.bytes.c_str()));
    BoostPath const boostPath(sample.bytes);
    TPath const name(u"resources");
    BoostPath const boostName("resources");
    Row(std::string("path join, ") + sample.name, 1.0)
        .Ours(Repeat([path, name] { return path / name; }))
        .Peer("boost", Repeat([boostPath, boostName] { return boostPath / boostName; }));
}

bool Paths()
{
    for (Sample const& sample : kSamples) {
        std::string const which = std::string(", ") + sample.name;
        Construction(sample);
        ToAll("path filename" + which, 0.8, sample.bytes, [](auto& p) { return Filename(p); });
        ToAll("path extension" + which, 0.6, sample.bytes, [](auto& p) { return Extension(p); });
        ToAll("path parent" + which, 1.0, sample.bytes, [](auto& p) { return Parent(p); });
        Elements(sample);
        Joining(sample);
    }
    return true;
}

[[maybe_unused]] bool const s_registered = Paths();

} // namespace
