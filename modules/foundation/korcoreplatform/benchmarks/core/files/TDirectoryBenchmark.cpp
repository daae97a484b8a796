// Listing a large directory beside the standard library, each entry as a path.

#include "korcoreplatform/benchmarks/support/PeerTable.h"
#include "korcoreplatform/main/core/files/TDirectory.h"
#include "korcoreplatform/main/core/files/TPath.h"
#include "korcoreplatform/main/string/TString.h"

#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include <dirent.h>

namespace {

using PeerTable::Repeat;
using PeerTable::Row;

constexpr int kEntries = 100000;

/// A directory of empty files that is made when it is first asked for, and removed at exit.
class LargeDirectory
{
public:
    static std::filesystem::path const& Path()
    {
        static LargeDirectory const s_directory;
        return s_directory.m_path;
    }

    ~LargeDirectory()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }

private:
    LargeDirectory()
    {
        std::string name = (std::filesystem::temp_directory_path() / "kor-bench-XXXXXX").string();
        if (::mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error("no temporary folder " + name);
        }
        m_path = name;
        for (int i = 0; i < kEntries; ++i) {
            std::ofstream(m_path / ("entry_" + std::to_string(i) + ".dat"));
        }
    }

    std::filesystem::path m_path;
};

/// Looks at each path.
std::size_t Total()
{
    std::size_t total = 0;
    for (TPath const& path : TDirectory(TPath(TString(LargeDirectory::Path().c_str())))) {
        total += path.HasTrailingSeparator() ? 0 : 1;
    }
    return total;
}

std::size_t StdTotal()
{
    std::size_t total = 0;
    for (std::filesystem::path const& path :
         std::filesystem::directory_iterator(LargeDirectory::Path())) {
        total += path.native().back() == '/' ? 0 : 1;
    }
    return total;
}

/// Holds on to all paths.
std::vector<TPath> All()
{
    std::vector<TPath> paths;
    for (TPath const& path : TDirectory(TPath(TString(LargeDirectory::Path().c_str())))) {
        paths.push_back(path);
    }
    return paths;
}

std::vector<std::filesystem::path> StdAll()
{
    std::vector<std::filesystem::path> paths;
    for (std::filesystem::path const& path :
         std::filesystem::directory_iterator(LargeDirectory::Path())) {
        paths.push_back(path);
    }
    return paths;
}

/// The system's entries, of which nothing is made.
std::size_t SystemTotal()
{
    std::size_t total = 0;
    ::DIR* const stream = ::opendir(LargeDirectory::Path().c_str());
    while (::readdir(stream) != nullptr) {
        ++total;
    }
    ::closedir(stream);
    return total;
}

/// `list` is timed when the directory is there.
template <class List>
PeerTable::Task Listing(List list)
{
    return [list](benchmark::State& state) {
        LargeDirectory::Path();
        Repeat(list)(state);
    };
}

bool Listings()
{
    Row("directory of 100,000, each looked at", 1.1)
        .Ours(Listing(Total))
        .Peer("std", Listing(StdTotal))
        .Limit("readdir", Listing(SystemTotal));
    Row("directory of 100,000, all kept", 1.1)
        .Ours(Listing(All))
        .Peer("std", Listing(StdAll))
        .Limit("readdir", Listing(SystemTotal));
    return true;
}

[[maybe_unused]] bool const s_registered = Listings();

} // namespace
