#include "korcoreplatform/main/core/logging/TruncateFileChannel.h"

#include "korcoreplatform/main/core/files/PathFunctions.h"
#include "korcoreplatform/main/string/TString.h"
#include "korsys/main/error/KorvelException.h"

namespace TLog {
namespace {

bool IsTooBig(TPath const& path, unsigned long maxSizeMB)
{
    long long const size = GetFileSize(path);
    return size >= 0 && static_cast<unsigned long long>(size) >> 20 >= maxSizeMB;
}

} // namespace

TruncateFileChannel::TruncateFileChannel(TPath const& path, int maxFiles, unsigned long maxSizeMB)
    : FileChannel(nullptr)
{
    bool isTooBig = false;
    for (int i = 0; File() == nullptr; ++i) {
        TPath const candidate = i == 0 ? path : WithSuffix(path, TString::number(i));
        isTooBig = IsTooBig(candidate, maxSizeMB);
        try {
            SetFile(OpenToAppend(candidate));
        } catch (KorvelException const&) {
            if (i + 1 >= maxFiles) {
                throw;
            }
            continue;
        }
        TPath const& opened = File()->GetPath();
        if (TString(opened) != TString(candidate)) { // it may be new, and is empty then
            isTooBig = GetFileSize(opened) > 0 && IsTooBig(opened, maxSizeMB);
        }
    }
    TPath const opened = GetPath();
    TPath const backup = WithSuffix(opened, u"bk");
    if (isTooBig) {
        CopyFile(opened, backup, CopyOption::Overwrite);
        File()->Truncate();
    }
    AppendOwn(Severity::Info, u"open-log", {{u"path", opened}});
    if (isTooBig) {
        AppendOwn(Severity::Info, u"previous-log", {{u"path", backup}});
    }
}

TruncateFileChannel::~TruncateFileChannel()
{
    AppendCloseLog();
}

} // namespace TLog
