#include "korcoreplatform/main/core/logging/TruncateFileChannel.h"

#include "korcoreplatform/tests/support/LogLines.h"
#include "korcoreplatform/tests/support/TemporaryFolder.h"

#include <fcntl.h>

namespace {

using TLog::TruncateFileChannel;

constexpr long kMiB = 1 << 20;
constexpr long kNone = -1;

/// Makes the file a hole of this size.
void Grow(std::filesystem::path const& file, long size)
{
    if (size != kNone) {
        std::ofstream(file).close();
        std::filesystem::resize_file(file, static_cast<std::uintmax_t>(size));
    }
}

long SizeOf(std::filesystem::path const& file)
{
    return exists(file) ? static_cast<long>(file_size(file)) : kNone;
}

TEST(TruncateFileChannelTest, AFileThatIsTooBigIsBackedUpAndEmptied)
{
    // The size of app.log, the largest in MiB.
    std::tuple<long, unsigned long, bool> const cases[] = {
        {12 * kMiB, 10, true},    {12 * kMiB, 13, false}, {kMiB, 1, true},
        {2 * kMiB - 1, 2, false}, {kNone, 0, false},      {0, 0, true}};
    for (auto const& [size, maxSizeMB, isTooBig] : cases) {
        SCOPED_TRACE(size);
        TemporaryFolder const folder;
        Grow(folder.Native("app_bk.log"), 5);
        Grow(folder.Native("app.log"), size);
        TruncateFileChannel(folder / u"app.log", 0, maxSizeMB);
        EXPECT_EQ(SizeOf(folder.Native("app_bk.log")), isTooBig ? size : 5);
        std::string const path = folder.Native("app.log");
        std::vector<std::string> lines = {PathLine("open-log", path), PathLine("close-log", path)};
        if (isTooBig) {
            lines.insert(lines.begin() + 1, PathLine("previous-log", folder.Native("app_bk.log")));
        }
        std::string const bytes = folder.Read("app.log");
        EXPECT_EQ(LogLines(bytes.substr(bytes.find('{'))), lines);
        EXPECT_EQ(bytes.find('{'), isTooBig || size == kNone ? 0u : std::size_t(size));
    }
}

TEST(TruncateFileChannelTest, TheFileThatIsOpenedIsTheOneMeasured)
{
    TemporaryFolder const folder;
    Grow(folder.Native("app.log"), 2 * kMiB);
    Grow(folder.Native("app_2.log"), 2 * kMiB);
    auto const open = [&] {
        return std::make_unique<TruncateFileChannel>(folder / u"app.log", 3, 1);
    };
    TLog::FileChannel::LogFile const lock(folder / u"app.log", O_WRONLY | O_APPEND);
    auto const first = open();
    auto const second = open();
    EXPECT_EQ(first->GetPath(), folder / u"app_1.log");
    EXPECT_EQ(second->GetPath(), folder / u"app_2.log");
    EXPECT_EQ(SizeOf(folder.Native("app_2_bk.log")), 2 * kMiB);
    EXPECT_EQ(SizeOf(folder.Native("app_1_bk.log")), kNone);
    EXPECT_EQ(SizeOf(folder.Native("app.log")), 2 * kMiB);
}

TEST(TruncateFileChannelTest, WhatFailsLeavesTheFileAlone)
{
    TidyFolder const folder;
    Grow(folder.Native("app.log"), kMiB);
    std::filesystem::create_directories(folder.Native("app_bk.log/app.log"));
    EXPECT_KOR_ERROR((TruncateFileChannel(folder / u"app.log", 2, 1)), TPath::Exception,
                     "TPathException_AutoGen_0x0C5F149A");
    EXPECT_EQ(SizeOf(folder.Native("app.log")), kMiB);
    std::string const last = folder.Native("no/app_1_99.log"); // the second candidate's hundredth
    EXPECT_KOR_ERROR_TEXT(
        (TruncateFileChannel(folder / u"no/app.log", 2, 1)), KorvelException,
        "KorvelException_AutoGen_0x98E57943",
        TString::fromStdString("Creating logfile " + last + " failed with error 2"));
}

} // namespace
