/// Whether the library runs from a source tree and may look for its files there.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"

/// Alternative paths are those of a developer's tree: they are allowed when the library lies in a
/// directory where it was built or installed beside its sources, and never in an application
/// bundle. Each answer is worked out once, at the first question, from the place of the library.
///
/// Throws: `std::bad_alloc`, in every function.
/// Thread safety: safe from any thread.
class KORCOREPLATFORM_EXPORT OptAllowAltPathsFlag
{
public:
    OptAllowAltPathsFlag() = delete;

    static bool GetIsAppBundle();

    /// Whether the library lies in a developer's tree, bundle or not.
    static bool GetAllowAltPathsFlagRepository();

    static bool GetAllowAltPathsFlag();
};
