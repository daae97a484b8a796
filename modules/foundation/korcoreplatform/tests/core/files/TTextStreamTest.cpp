#include "korcoreplatform/main/core/files/TTextStream.h"

#include "korcoreplatform/tests/support/KorTest.h"

#include <QBuffer>

namespace {

using Lines = std::vector<TString>;

TEST(TTextStreamTest, LinesAreReadAtOnceAndOneByOne)
{
    TString const longLine(u'\u00E9', 40000); // more than the stream takes from a device at once
    std::pair<TString, Lines> const cases[] = {
        {u"", {}},
        {u"\n", {u""}},
        {u"a\r\n\r\n\nb\n", {u"a", u"", u"", u"b"}},
        {longLine + u"\r\nb\n" + longLine, {longLine, u"b", longLine}},
    };
    for (auto const& [text, lines] : cases) {
        SCOPED_TRACE(text.left(20));
        QByteArray const bytes(text.toStdString().c_str());
        TTextStream all(bytes);
        all.setCodec("UTF-8");
        EXPECT_EQ(all.ReadAllLines(), lines);
        EXPECT_TRUE(all.ReadAllLines().empty());
        TTextStream stream(bytes);
        stream.setCodec("UTF-8");
        Lines walked;
        for (auto line = stream.LinesBegin(); line != stream.LinesEnd(); ++line) {
            walked.push_back(*line);
        }
        EXPECT_EQ(walked, lines);
    }
}

TEST(TTextStreamTest, AnIteratorGivesCopiesAndEndsEmpty)
{
    TTextStream stream(QByteArray("the first of the lines\nthe second of the lines"));
    TTextStream::LineIterator line = stream.LinesBegin();
    TTextStream::LineIterator const first = line;
    TTextStream::LineIterator const second = ++line;
    EXPECT_EQ(*second, TString(u"the second of the lines"));
    EXPECT_EQ(++line, stream.LinesEnd());
    EXPECT_TRUE(line->isEmpty());
    EXPECT_EQ(++line, TTextStream::LineIterator(nullptr));
    EXPECT_EQ(*first, TString(u"the first of the lines")); // untouched by what came after
    EXPECT_EQ(*(line = first), *first);
    EXPECT_EQ(line, second);
}

TEST(TTextStreamTest, WrittenLinesEndAndReachTheDevice)
{
    QBuffer buffer;
    ASSERT_TRUE(buffer.open(QIODevice::WriteOnly));
    TTextStream stream(&buffer);
    stream.setCodec("UTF-8");
    stream.WriteLines({});
    EXPECT_EQ(buffer.data(), QByteArray(""));
    stream.WriteLines({u"a", u"", u"\u00E9"});
    EXPECT_EQ(buffer.data(), QByteArray("a\n\n\xC3\xA9\n")); // without a flush
    stream << TString(u"b") << u"c" << u'd' << flush << 5;
    EXPECT_EQ(buffer.data(), QByteArray("a\n\n\xC3\xA9\nbcd"));
    stream << endl;
    EXPECT_EQ(buffer.data(), QByteArray("a\n\n\xC3\xA9\nbcd5\n"));
}

} // namespace
