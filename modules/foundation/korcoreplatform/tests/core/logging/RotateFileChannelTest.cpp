#include "korcoreplatform/main/core/logging/RotateFileChannel.h"

#include "korcoreplatform/main/core/logging/Event.h"
#include "korcoreplatform/tests/support/LogLines.h"
#include "korcoreplatform/tests/support/TemporaryFolder.h"
#include "korcoreplatform/tests/support/TimeZoneGuard.h"

namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;
using std::chrono::system_clock;

/// Lives at a time of its own and counts its attempts to open a file.
template <class Base>
class Timed : public Base
{
public:
    using Base::Base;

    steady_clock::time_point GetTimestamp() const override { return now; }
    std::unique_ptr<TLog::FileChannel::LogFile> OpenFile(steady_clock::time_point t) const override
    {
        ++attempts;
        return Base::OpenFile(t);
    }

    using Base::Append;
    void Append(char16_t const* key)
    {
        Base::Append(TLog::Severity::Info, TLog::Event(key, nullptr));
    }

    steady_clock::time_point now = steady_clock::now();
    mutable int attempts = 0;
};

struct OnDemand : TLog::RotateFileChannel
{
    using RotateFileChannel::RotateFileChannel;
    bool ShouldRotate() const override { return isDue; }
    bool isDue = false;
};

std::string NameOf(TLog::Channel const& channel)
{
    return TString(channel.GetPath().Filename()).toStdString();
}

TEST(RotateFileChannelTest, AFileIsNamedAfterItsTime)
{
    TimeZoneGuard const zone("XYZ-2");
    TemporaryFolder const folder;
    Timed<OnDemand> channel(folder / u"app.log");
    // Half a second in: the clocks are read one after the other.
    channel.now += system_clock::time_point(1709380989s + 500ms) - system_clock::now();
    channel.Open();
    EXPECT_EQ(NameOf(channel), "app_2024_03_02_14_03_09.log");
    EXPECT_TRUE(channel.Rotate()); // the first file is still locked while the second is opened
    EXPECT_EQ(NameOf(channel), "app_2024_03_02_14_03_09_1.log");
}

TEST(RotateFileChannelTest, AFailureIsToldAndNotTriedAgainForFiveSeconds)
{
    TemporaryFolder const folder;
    long const descriptors = CountOpenDescriptors();
    std::filesystem::create_directory(folder.Native("logs"));
    Timed<OnDemand> channel(folder / u"logs/app.log");
    channel.Append(u"lost");
    EXPECT_EQ(channel.GetCounters().lostRecords, 1u);
    channel.Open();
    std::string const name = NameOf(channel);
    std::filesystem::rename(folder.Native("logs"), folder.Native("away"));
    channel.isDue = true;
    std::pair<steady_clock::duration, int> const steps[] = {
        {0s, 2}, {0s, 2}, {5s, 2}, {1ns, 3}, {4s, 3}};
    for (auto const& [pause, attempts] : steps) {
        channel.now += pause;
        channel.Append(u"record");
        EXPECT_EQ(channel.attempts, attempts);
        EXPECT_TRUE(channel.ShouldBackOff());
    }
    std::filesystem::create_directory(folder.Native("logs"));
    EXPECT_TRUE(channel.Rotate());
    EXPECT_TRUE(channel.BackOffTimeCompleted());
    EXPECT_EQ(CountOpenDescriptors(), descriptors + 1);

    std::vector<std::string> lines = LogLines(folder.Read("away/" + name));
    for (std::string& line : lines) {
        line = line.substr(0, line.find('/'));
    }
    std::string const failed = R"(error rotate-log-failed {"msg":"Creating logfile )";
    EXPECT_EQ(lines, (std::vector<std::string>{R"(info open-log {"path":")", failed, "info record",
                                               "info record", "info record", failed, "info record",
                                               "info record", R"(info rotate-log {"new-path":")"}));
}

TEST(RotateFileChannelTest, FilesGrowOldByTheSteadyClock)
{
    TemporaryFolder const folder;
    Timed<TLog::TimeRotateFileChannel> channel(folder / u"app.log", 60s);
    channel.Open();
    for (int files = 1; files < 4; ++files) {
        channel.now += 60s - 1ns;
        channel.Append(u"record");
        EXPECT_EQ(channel.attempts, files);
        channel.now += 1ns;
        channel.Append(u"record");
        EXPECT_EQ(channel.attempts, files + 1);
    }
}

TEST(RotateFileChannelTest, FilesFillUpToTheirSize)
{
    TemporaryFolder const folder;
    constexpr std::size_t kRecords = 5000;
    {
        TLog::SizeRotateFileChannel channel(folder / u"app.log", 1); // several files in a second
        channel.Open();
        for (std::size_t i = 0; i < kRecords; ++i) {
            channel.Append(TLog::Severity::Info, TLog::Event(TString(u'x', 1000), nullptr));
        }
    }
    std::size_t files = 0;
    std::size_t lines = 0;
    for (auto const& file : std::filesystem::directory_iterator(folder.Native(""))) {
        EXPECT_LT(file.file_size(), (1u << 20) + 65536 + 2000);
        lines += LogLines(folder.Read(file.path().filename())).size();
        ++files;
    }
    EXPECT_EQ(files, 6u);
    EXPECT_EQ(lines, kRecords + 2 * files);
}

} // namespace
