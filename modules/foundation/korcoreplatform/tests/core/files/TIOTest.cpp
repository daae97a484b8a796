#include "korcoreplatform/main/core/files/TIO.h"

#include "korcoreplatform/main/core/files/TFile.h"
#include "korcoreplatform/tests/support/KorTest.h"

#include <QBuffer>

namespace {

/// A stream that reads from the start of its text and writes to its end.
template <class Base>
class Stream : public Base
{
public:
    using TIO::Read;
    using TIO::Write;

    void Close() override {}
    QIODevice* GetQIODevice() override { return device; }
    bool IsOpen() const override { return true; }
    bool Open(TIO::OpenMode) override { return true; }
    long long Size() const override { return static_cast<long long>(text.size()); }

    long long Read(void* buffer, long long max) override
    {
        ++calls;
        std::copy_n(text.data(), std::min(max, atOnce), static_cast<char*>(buffer));
        return std::min(max, atOnce);
    }

    long long Write(void const* data, long long count) override
    {
        text.append(static_cast<char const*>(data), static_cast<std::size_t>(count));
        return count;
    }

    std::string text;
    QIODevice* device = nullptr;
    long long atOnce = 100; ///< The most that a call gives; negative for a failure.
    int calls = 0;
};

class RandomStream : public Stream<TRandomIO>
{
public:
    using TRandomIO::Peek;
    long long Peek(void* buffer, long long max) override { return Read(buffer, max); }
    long long Pos() const override { return pos; }
    bool Seek(long long) override { return false; }

    long long pos = 0;
};

TEST(TIOTest, ReadingGivesWhatCameAndThrowsForANegativeCount)
{
    RandomStream stream;
    stream.text = "abcde";
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
    Stream<TSequentialIO> sequential;
    EXPECT_TRUE(sequential.AtEnd() && sequential.ReadAll().empty());
    sequential.Write("ab");
    sequential.Write(std::vector<char>{'\0', 'c'});
    EXPECT_FALSE(sequential.AtEnd());
    EXPECT_EQ(sequential.ReadAll(), (std::vector<char>{'a', 'b', '\0', 'c'}));
    RandomStream random;
    random.text = "abcd";
    for (long long const pos : {0, 3, 4, 5}) {
        random.pos = pos;
        EXPECT_EQ(random.AtEnd(), pos >= 4);
        EXPECT_EQ(random.ReadAll().size(), pos < 4 ? 4U - static_cast<unsigned>(pos) : 0U);
    }
    EXPECT_EQ(random.calls, 2); // none at the end
}

TEST(TIOTest, TheDeviceIsWhatTheClassSays)
{
    Stream<TSequentialIO> stream;
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
