#include "korcoreplatform/main/core/files/TFile.h"
#include "korcoreplatform/main/core/files/TPath.h"
#include "korcoreplatform/main/string/TFormatString.h"
#include "korcoreplatform/tests/support/TemporaryFolder.h"

#ifdef __linux__ // elsewhere the libraries keep to the `read` that they were linked with

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

off_t g_badOffset = -1; ///< The disk gives no byte from there on; negative: it is whole.

} // namespace

/// What the process calls in the place of the C library's: a disk that fails in the middle of a
/// file.
extern "C" __attribute__((visibility("default"))) ssize_t read(int descriptor, void* to, size_t max)
{
    if (g_badOffset >= 0) {
        off_t const at = ::lseek(descriptor, 0, SEEK_CUR);
        if (at >= g_badOffset) {
            errno = EIO;
            return -1;
        }
        max = std::min(max, static_cast<size_t>(g_badOffset - at));
    }
    return ::syscall(SYS_read, descriptor, to, max);
}

namespace {

TEST(ReadErrorProcessTest, AFileThatCannotBeReadToItsEndIsNotCut)
{
    TidyFolder const folder;
    folder.Write("file", std::string(300'000, 'x'));
    TPath const path = folder / u"file";
    for (off_t const offset : {0, 100, 512, 4096, 16384, 65536, 299'999}) {
        SCOPED_TRACE(offset);
        for (auto const& load : {+[](TPath const& file) { TFile::LoadTextFile(file, false); },
                                 +[](TPath const& file) { TFile::LoadUtf8File(file, false); },
                                 +[](TPath const& file) { TFile::LoadBinaryFile(file); }}) {
            g_badOffset = offset;
            EXPECT_KOR_ERROR_TEXT(load(path), TIO::Exception, "TIOException_TFile_0x47B61D6A",
                                  TFormat(u"IO error attempting to read from file \"%1\".", path));
            g_badOffset = -1;
        }
    }
}

} // namespace

#endif
