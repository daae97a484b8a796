/// The option that names the directory of the application.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/string/TString.h"

/// Where the application lives, for the host's own use; empty until the host sets it. The text is
/// destroyed when the process exits.
///
/// Thread safety: reading is safe from any thread while none sets it.
class KORCOREPLATFORM_EXPORT OptApplicationDir
{
public:
    OptApplicationDir() = delete;

    /// Empty, or a path that ends with a separator.
    static TString const& GetApplicationDir();

    /// Appends the native separator to a text that ends with neither "/" nor "\", unless it is
    /// empty.
    static void SetApplicationDir(TString const& dir);
};
