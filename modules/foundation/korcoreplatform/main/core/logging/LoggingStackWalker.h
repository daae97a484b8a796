/// The call stack of the running thread, as log records contain it.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/core/logging/Value.h"
#include "korcoreplatform/main/string/TString.h"

#include <string>
#include <vector>

/// Static functions only. Frames are what `TStackWalker` collects: one UTF-8 text each, innermost
/// first.
///
/// Throws: `std::bad_alloc`.
/// Thread safety: every function may be called from any thread.
class KORCOREPLATFORM_EXPORT LoggingStackWalker
{
public:
    using Frames = std::vector<std::string>;

    LoggingStackWalker() = delete;

    /// "stack": the frames joined as `FramesToLogLine` does; "stack-size": how many there are;
    /// "stack-hash": a number that equal stacks share. Only "stack", with the text "disabled",
    /// while walking is not active and not forced.
    static TLog::Object::Map CaptureForLogging(bool force);

    /// One text with a line feed between two frames. Both names mean the same.
    static TString FramesToLogLine(Frames const& frames);
    static TString CallstackFramesAsString(Frames const& frames);

    /// The frames of the caller, whether walking is active or not.
    static Frames ForceGenerateCallstack();
};

/// `LoggingStackWalker::CaptureForLogging(force)`.
KORCOREPLATFORM_EXPORT TLog::Object::Map CaptureStackTraceForLogging(bool force);
