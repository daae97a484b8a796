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

bool Listings()
{
    Row("directory of 100,000, each looked at", 1.1)
        .Ours(Repeat(Total))
        .Peer("std", Repeat(StdTotal));
    Row("directory of 100,000, all kept", 1.1).Ours(Repeat(All)).Peer("std", Repeat(StdAll));
    return true;
}

[[maybe_unused]] bool const s_registered = Listings();

} // namespace
