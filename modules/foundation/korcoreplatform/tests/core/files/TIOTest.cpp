#include "korcoreplatform/main/core/files/TIO.h"

#include "korcoreplatform/main/core/files/TFile.h"
#include "korcoreplatform/tests/support/KorTest.h"

#include <QBuffer>

namespace {

/// Always gives what its text begins with.
class Stream : public TRandomIO
{
public:
    using TIO::Read;
    using TRandomIO::Peek;

    void Close() override {}
    QIODevice* GetQIODevice() override { return device; }
    bool IsOpen() const override { return true; }
    bool Open(TIO::OpenMode) override { return true; }
    long long Pos() const override { return pos; }
    bool Seek(long long) override { return false; }
    long long Size() const override { return static_cast<long long>(text.size()); }
    long long Write(void const*, long long) override { return -1; }
    long long Peek(void* buffer, long long max) override { return Read(buffer, max); }
    long long Read(void* buffer, long long max) override
    {
        ++calls;
        std::copy_n(text.data(), std::min(max, atOnce), static_cast<char*>(buffer));
        return std::min(max, atOnce);
    }

    std::string text = "abcde";
    long long pos = 0;
    QIODevice* device = nullptr;
    long long atOnce = 100; ///< The most that a call gives; negative for a failure.
    int calls = 0;
};

TEST(TIOTest, ReadingGivesWhatCameAndThrowsForANegativeCount)
{
    Stream stream;
    stream.atOnce = 3;
    EXPECT_EQ(stream.Read(5), (std::vector<char>{'a', 'b', 'c'})); // not filled up with zeros
    EXPECT_EQ(stream.Peek(2), (std::vector<char>{'a', 'b'}));
    EXPECT_TRUE(stream.Read(0).empty() && stream.Peek(0).empty());
    EXPECT_EQ(stream.calls, 2);
    stream.atOnce = -7;
    QBuffer buffer;
    stream.device = &buffer;
    TString const reason(buffer.errorString());
    EXPECT_KOR_ERROR_TEXT(stream.Read(1), TIO::Exception, "TIOException_AutoGen_0x15B14D91",
                          reason);
    EXPECT_KOR_ERROR_TEXT(stream.Peek(1), TIO::Exception, "TIOException_AutoGen_0x7A55F773",
                          reason);
}

TEST(TIOTest, ReadAllGoesFromThePositionToTheEnd)
{
    Stream stream;
    for (int const pos : {0, 4, 5, 6}) {
        stream.pos = pos;
        EXPECT_EQ(stream.AtEnd(), pos >= 5);
        EXPECT_EQ(stream.ReadAll().size(), std::string("abcde").erase(0, std::min(pos, 5)).size());
    }
    EXPECT_EQ(stream.calls, 2); // none at the end
}

TEST(TIOTest, TheDeviceIsWhatTheClassSays)
{
    Stream stream;
    TIO const& constant = stream;
    EXPECT_KOR_ERROR(constant.GetQIODeviceOrThrow(), TIO::Exception,
                     "TIOException_AutoGen_0x16CDB0C3");
    EXPECT_TRUE(stream.ErrorString().isEmpty());
    QBuffer buffer;
    stream.device = &buffer;
    EXPECT_EQ(stream.GetQIODeviceOrThrow(), &buffer);
    EXPECT_EQ(constant.GetQIODevice(), &buffer);
}

} // namespace
