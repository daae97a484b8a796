/// A log file that starts anew when it has grown too big.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/core/logging/FileChannel.h"

namespace TLog {

/// Appends to a file whose size is looked at once, when the channel is made: if it is at least the
/// limit, the file is copied to title_bk.ext, over an older copy, and emptied. What is written then
/// begins with a record "open-log", and "previous-log" when the file was emptied; the destructor
/// writes "close-log".
class KORCOREPLATFORM_EXPORT TruncateFileChannel : public FileChannel
{
public:
    /// Tries `path`, then title_1.ext and so on, `maxFiles` names in all and at least one.
    /// `maxSizeMB` counts whole MiB.
    /// Throws: what the last name gives, see `FileChannel::LogFile`; what `CopyFile` throws, which
    /// leaves the file as it was.
    TruncateFileChannel(TPath const& path, int maxFiles, unsigned long maxSizeMB);
    ~TruncateFileChannel() override;
};

} // namespace TLog
