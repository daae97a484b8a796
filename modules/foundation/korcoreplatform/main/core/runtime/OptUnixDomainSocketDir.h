/// The option that names the directory of the local sockets.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/string/TString.h"

/// Where the application keeps its local sockets, for the host's own use; empty until the host sets
/// it. The text is destroyed when the process exits.
///
/// Thread safety: reading is safe from any thread while none sets it.
class KORCOREPLATFORM_EXPORT OptUnixDomainSocketDir
{
public:
    OptUnixDomainSocketDir() = delete;

    static TString const& GetUnixDomainSocketDir();
    static void SetUnixDomainSocketDir(TString const& dir); ///< Takes the text as it is.
};
