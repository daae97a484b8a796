#include "korcoreplatform/main/core/logging/FileChannel.h"

#include "korcoreplatform/main/core/logging/Event.h"
#include "korcoreplatform/main/core/logging/Formatter.h"
#include "korcoreplatform/main/core/logging/TruncateFileChannel.h"
#include "korcoreplatform/main/core/logging/Value.h"
#include "korcoreplatform/tests/support/LogLines.h"
#include "korcoreplatform/tests/support/TemporaryFolder.h"

#include <fcntl.h>
#include <unistd.h>

namespace {

using namespace TLog;

constexpr int kAppend = O_WRONLY | O_APPEND | O_CREAT;
constexpr std::size_t kBuffer = 65536;

std::unique_ptr<FileChannel::LogFile> Open(TPath const& path, int flags = kAppend)
{
    return std::make_unique<FileChannel::LogFile>(path, flags);
}

TEST(FileChannelTest, TheBufferIsWrittenWhenTheNextBytesDoNotFit)
{
    std::tuple<std::vector<std::size_t>, std::size_t> const cases[] = {
        {{kBuffer - 1, 1}, 0},
        {{kBuffer - 1, 2}, kBuffer - 1},
        {{10, kBuffer}, 10},
        {{10, kBuffer + 1, 5}, kBuffer + 11}};
    for (auto const& [sizes, sizeOnDisk] : cases) {
        SCOPED_TRACE(sizeOnDisk);
        TemporaryFolder const folder;
        std::string all;
        auto const file = Open(folder / u"app.log");
        for (std::size_t const size : sizes) {
            all.append(size, static_cast<char>('a' + size % 26));
            file->Write(&all[all.size() - size], size);
        }
        EXPECT_EQ(folder.Read("app.log"), all.substr(0, sizeOnDisk));
        file->Flush();
        file->Write("dropped", 7);
        file->WriteRaw("raw", (1ull << 32) + 3);
        EXPECT_EQ(folder.Read("app.log"), all + "raw");
        file->Truncate();
        file->Write("new", 3);
        file->Flush();
        EXPECT_EQ(folder.Read("app.log"), "new");
    }
}

TEST(FileChannelTest, RecordsReachTheFileAsWholeLinesInOrder)
{
    TemporaryFolder const folder;
    TLog::Formatter formatter;
    std::string all;
    FileChannel channel(Open(folder / u"app.log"));
    auto const append = [&](std::size_t length) {
        Event const event(u"msg", TLog::Literal::String(TString(u'x', static_cast<int>(length))));
        formatter.AppendLine(all, TLog::AccessLevel::Standard, Severity::Warn, event);
        channel.Append(Severity::Warn, event);
    };
    append(0);
    append(kBuffer - 2 * all.size());
    EXPECT_EQ(folder.Read("app.log").size(), 0u) << "the lines just fill the buffer";
    for (std::size_t i = 0; i < 2000; ++i) {
        append(i % 500 == 499 ? 100000 : i * 37 % 700);
        std::string const written = i % 97 == 0 ? folder.Read("app.log") : "\n";
        ASSERT_EQ(written.back(), '\n');
    }
    channel.Flush();
    EXPECT_TRUE(folder.Read("app.log") == all);
    EXPECT_EQ(channel.GetCounters().bytesWritten, all.size());
}

TEST(FileChannelTest, AFileThatIsLockedOrCannotBeOpenedIsPassedOver)
{
    TidyFolder const folder;
    folder.Write("file", "");
    std::filesystem::create_directory(folder.Native("app_1.log"));
    {
        std::vector<std::unique_ptr<FileChannel::LogFile>> files;
        auto const open = [&](char16_t const* name, int flags = kAppend) {
            files.push_back(Open(folder / name, flags));
            return files.back()->GetPath();
        };
        for (char16_t const* const name : {u"app.log", u"app_2.log", u"app_3.log"}) {
            EXPECT_EQ(open(u"app.log"), folder / name);
        }
        EXPECT_EQ(open(u"log"), folder / u"log");
        files.back()->WriteRaw("kept", 4);
        EXPECT_EQ(open(u"log", kAppend | O_TRUNC), folder / u"log_1.");
        EXPECT_EQ(folder.Read("log"), "kept") << "emptied by one who does not have the lock";
        std::string const command = "! ls -l /dev/fd/ | grep -F " + folder.Native("").string();
        EXPECT_EQ(std::system(command.c_str()), 0) << "a program that is started has the files";
        while (files.size() < 3 + 100) {
            open(u"log");
        }
        EXPECT_KOR_ERROR(open(u"log"), KorvelException, "KorvelException_AutoGen_0x96B9ECEF");
    }
    EXPECT_EQ(Open(folder / u"log", kAppend | O_TRUNC)->GetPath(), folder / u"log");
    EXPECT_EQ(folder.Read("log"), "");
    for (std::string const end :
         {"no/a_99.log failed with error 2", "file/a_99.log failed with error 20"}) {
        TString const inFolder = TString(end.substr(0, end.find('/')).c_str()) + u"/a.log";
        EXPECT_KOR_ERROR_TEXT(
            Open(folder / inFolder), KorvelException, "KorvelException_AutoGen_0x98E57943",
            TString::fromStdString("Creating logfile " + folder.Native(end).string()));
    }
}

TEST(FileChannelTest, AForkNeitherWritesNorUnlocks)
{
    TemporaryFolder const folder;
    auto channel = std::make_unique<TLog::TruncateFileChannel>(folder / u"app.log", 1, 10);
    auto const file = Open(folder / u"file.log");
    file->WriteRaw("kept ", 5);
    file->Write("buffered", 8);
    auto const inChild = [&]() noexcept {
        channel->Append(Severity::Info, Event(u"of-child", nullptr));
        channel.reset();
        file->WriteRaw("raw", 3);
        file->Flush();
        file->Truncate();
        TLog::TruncateFileChannel(folder / u"app.log", 1, 10);
        ::_exit(0);
    };
    EXPECT_EXIT(inChild(), testing::ExitedWithCode(0), "");
    auto const lines = [&](std::string const& name) {
        std::string const path = folder.Native(name);
        return std::vector{PathLine("open-log", path), PathLine("close-log", path)};
    };
    EXPECT_EQ(folder.Read("app.log") + folder.Read("file.log"), "kept ");
    EXPECT_EQ(LogLines(folder.Read("app_1.log")), lines("app_1.log"));
    EXPECT_EQ(Open(folder / u"app.log")->GetPath(), folder / u"app_1.log");
    channel.reset();
    EXPECT_EQ(LogLines(folder.Read("app.log")), lines("app.log"));
    file->Flush();
    EXPECT_EQ(folder.Read("file.log"), "kept buffered");
}

TEST(FileChannelTest, TheSizeIsInWholeMebibytesAndALossInLines)
{
    TemporaryFolder const folder;
    FileChannel channel(Open(folder / u"app.log"));
    for (unsigned long const size : {1048575ul, 1048576ul, 5 * 1048576ul - 1}) {
        std::filesystem::resize_file(folder.Native("app.log"), size);
        EXPECT_EQ(channel.GetFileSizeMB(), size / 1048576);
    }
    std::filesystem::remove(folder.Native("app.log"));
    EXPECT_EQ(channel.GetFileSizeMB() + FileChannel(nullptr).GetFileSizeMB(), 0u);

    auto const full = Open(u"/dev/full", O_WRONLY);
    full->Write("a\nb\nc", 5);
    full->Flush();
    EXPECT_EQ(full->GetCounters().lostRecords, 3u);
    EXPECT_EQ(full->GetCounters().bytesWritten, 0u);
}

} // namespace
