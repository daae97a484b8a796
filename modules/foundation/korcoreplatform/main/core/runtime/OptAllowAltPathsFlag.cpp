#include "korcoreplatform/main/core/runtime/OptAllowAltPathsFlag.h"

#include "korcoreplatform/main/core/files/PathFunctions.h"
#include "korcoreplatform/main/core/files/TPath.h"
#include "korcoreplatform/main/core/runtime/OptAllowAltPathsFlag_p.h"
#include "korcoreplatform/main/string/TString.h"

namespace {

/// Lower-case, below the root of a tree.
constexpr char16_t const* kRepositoryTails[] = {u"build", u"install/server/x64",
                                                u"install/server/x86"};

TPath LibraryDirectory()
{
    static char const s_inThisLibrary = 0;
    return ModuleDirectory(&s_inThisLibrary);
}

} // namespace

bool AltPaths::IsAppBundleDirectory(TString const& moduleDir)
{
    return moduleDir.endsWith(u".app/Contents/Frameworks");
}

bool AltPaths::IsRepositoryDirectory(TString const& dir)
{
    for (char16_t const* tail : kRepositoryTails) {
        int const rootLength = dir.length() - TString::length(tail) - 1;
        if (rootLength < 0 || dir.mid(rootLength + 1).toLower() != tail) {
            continue;
        }
        TPath const root = TPath::MakePath(dir.left(rootLength));
        if (PathExists(root) && IsDirectory(root, true)) {
            return true;
        }
    }
    return false;
}

bool OptAllowAltPathsFlag::GetIsAppBundle()
{
    static bool const s_isBundle =
        AltPaths::IsAppBundleDirectory(LibraryDirectory().GenericString());
    return s_isBundle;
}

bool OptAllowAltPathsFlag::GetAllowAltPathsFlagRepository()
{
    static bool const s_isRepository =
        AltPaths::IsRepositoryDirectory(TString(LibraryDirectory().Parent()));
    return s_isRepository;
}

bool OptAllowAltPathsFlag::GetAllowAltPathsFlag()
{
    return !GetIsAppBundle() && GetAllowAltPathsFlagRepository();
}
