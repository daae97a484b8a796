/// What directories tell about the place of the library.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"

class TString;

namespace AltPaths {

/// Whether a library in `moduleDir`, written with "/", belongs to an application bundle.
KORCOREPLATFORM_EXPORT bool IsAppBundleDirectory(TString const& moduleDir);

/// Whether `dir`, the parent of the library's directory, is where a developer's tree is built or
/// installed: an existing directory, followed by any unit and one of the known tails, in any letter
/// case.
KORCOREPLATFORM_EXPORT bool IsRepositoryDirectory(TString const& dir);

} // namespace AltPaths
