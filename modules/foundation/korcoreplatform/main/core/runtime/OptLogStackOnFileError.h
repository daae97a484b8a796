/// The option that adds a call stack to the records of failed file operations.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"

/// Whether a file error that is logged carries the call stack of the failing place. Off at start.
///
/// Thread safety: safe from any thread.
class KORCOREPLATFORM_EXPORT OptLogStackOnFileError
{
public:
    OptLogStackOnFileError() = delete;

    static bool GetLogStackOnFileError() noexcept;
    static void SetLogStackOnFileError(bool isOn) noexcept;
};
