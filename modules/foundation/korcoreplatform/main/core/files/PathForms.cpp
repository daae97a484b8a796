#include "korcoreplatform/main/core/files/PathFunctions.h"
#include "korsys/main/system/TPathCore.h"
#include "korsys/main/system/TSystemCore.h"

#include <QByteArray>
#include <QDir>
#include <QFileInfo>
#include <QString>
#include <QtGlobal>

#include <cerrno>
#include <cstddef>
#include <vector>

#include <pwd.h>
#include <sys/types.h>
#include <unistd.h>

namespace {

/// The system's entry for the real user of the process.
class UserEntry
{
public:
    UserEntry()
    {
        constexpr std::size_t kFirstSize = 1024;
        int error = ERANGE;
        for (std::size_t size = kFirstSize; error == ERANGE || error == EINTR; size *= 2) {
            m_buffer.resize(size);
            error = ::getpwuid_r(::getuid(), &m_space, m_buffer.data(), m_buffer.size(), &m_entry);
        }
    }

    UserEntry(UserEntry const&) = delete;
    UserEntry& operator=(UserEntry const&) = delete;

    struct passwd const* Get() const { return m_entry; } ///< Null: there is none.

private:
    std::vector<char> m_buffer; ///< Holds the texts of the entry.
    struct passwd m_space = {};
    struct passwd* m_entry = nullptr;
};

} // namespace

TPath CurrentPath()
{
    return TPath(TString(QDir::currentPath()));
}

TPath CanonicalPath(TPath const& path)
{
    if (path.IsUNC()) {
        return NormalPath(path);
    }
    return TPath(TString(QFileInfo(path.NativeString().toQString()).canonicalFilePath()));
}

TPath HomePath()
{
    UserEntry const user;
    if (user.Get() != nullptr) {
        return TPath(TString::fromLocal8Bit(user.Get()->pw_dir));
    }
    return TPath(TString::fromLocal8Bit(qgetenv("HOME").constData()));
}

TString UserName()
{
    UserEntry const user;
    return user.Get() != nullptr ? TString::fromLocal8Bit(user.Get()->pw_name) : TString();
}

TPath ExpandHomePath(TPath const& path)
{
    TString const generic = path.GenericString();
    if (generic != u"~" && !generic.startsWith(u"~/")) {
        return path;
    }
    return generic.length() < 3 ? HomePath() : HomePath() / TPath(generic.mid(2));
}

TPath ExecutablePath()
{
    return TPath(TSystemCore::ExecutablePath());
}

TPath ExecutableFilename()
{
    return TPath(TSystemCore::ExecutableFilename());
}

TPath ModulePath(TPath const& module)
{
    return TPath(TSystemCore::ModulePath(module.toTPathCore()));
}

TPath ModuleFilename(void const* address)
{
    return TPath(TSystemCore::ModuleFilename(address));
}

TPath ModuleDirectory(void const* address)
{
    return TPath(TSystemCore::ModuleDirectory(address));
}

TString GetFileName(TString const& path)
{
    return TPath(path).Filename();
}

TString GetFileDirectory(TString const& path)
{
    return path.left(path.length() - GetFileName(path).length());
}

TString GetFileTitle(TPath const& path)
{
    return path.Stem();
}

TString FileExtension(TPath const& path)
{
    // A file name without dot has no extension to begin with.
    return TString(path.Extension()).toLower();
}

TString RemoveFileExtension(TPath const& path)
{
    return TPath(path).RemoveExtension();
}
