// How a listing grows with the number of entries.

#include "korcoreplatform/benchmarks/support/PeerTable.h"
#include "korcoreplatform/main/core/files/TDirectory.h"
#include "korcoreplatform/main/core/files/TPath.h"
#include "korcoreplatform/main/string/TString.h"

#include <QTemporaryDir>

#include <cstddef>
#include <filesystem>
#include <map>
#include <stdexcept>
#include <string>

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

namespace {

using PeerTable::Row;

/// Directories of empty files, made when they are first asked for, and removed at exit.
class Directories
{
public:
    static std::string const& With(int entries)
    {
        static Directories s_all;
        std::string& path = s_all.m_paths[entries];
        if (path.empty()) {
            path = s_all.m_folder.filePath(QString::number(entries)).toStdString();
            Fill(path, entries);
        }
        return path;
    }

private:
    /// Many entries are links to one file, which takes less room in the file system.
    static void Fill(std::string const& path, int entries)
    {
        constexpr int kLinks = 30000; // common systems allow that many
        std::string file;
        std::filesystem::create_directory(path);
        for (int i = 0; i < entries; ++i) {
            std::string const name = path + "/entry_" + std::to_string(i) + ".dat";
            bool const isFile = i % kLinks == 0;
            if (isFile ? ::close(::open(name.c_str(), O_WRONLY | O_CREAT, 0666)) != 0
                       : ::link(file.c_str(), name.c_str()) != 0) {
                throw std::runtime_error("cannot create " + name);
            }
            if (isFile) {
                file = name;
            }
        }
    }

    QTemporaryDir m_folder;
    std::map<int, std::string> m_paths; ///< By number of entries.
};

std::size_t Total(std::string const& directory)
{
    std::size_t total = 0;
    for (TPath const& path : TDirectory(TPath(TString(directory.c_str())))) {
        total += path.HasTrailingSeparator() ? 0 : 1;
    }
    return total;
}

std::size_t StdTotal(std::string const& directory)
{
    std::size_t total = 0;
    for (std::filesystem::path const& path : std::filesystem::directory_iterator(directory)) {
        total += path.native().back() == '/' ? 0 : 1;
    }
    return total;
}

std::size_t SystemTotal(std::string const& directory)
{
    std::size_t total = 0;
    ::DIR* const stream = ::opendir(directory.c_str());
    while (::readdir(stream) != nullptr) {
        ++total;
    }
    ::closedir(stream);
    return total;
}

PeerTable::Task Listing(int entries, std::size_t (*list)(std::string const&))
{
    return [=](benchmark::State& state) {
        std::string const& directory = Directories::With(entries);
        PeerTable::Repeat([&] { return list(directory); })(state);
    };
}

bool Entries()
{
    for (int n : {10, 100, 1000, 10000, 100000, 1000000}) {
        Row("directory, " + std::to_string(n) + " entries")
            .Ours(Listing(n, &Total))
            .Peer("std::filesystem", Listing(n, &StdTotal))
            .Limit("readdir", Listing(n, &SystemTotal))
            .At("directory-entries", "", n);
    }
    return true;
}

[[maybe_unused]] bool const s_registered = Entries();

} // namespace
