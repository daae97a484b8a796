#include "korcoreplatform/main/string/TTextEncoding.h"

#include "korcoreplatform/tests/support/KorTest.h"

using namespace std::string_literals;

namespace {

constexpr char kTooLong[] = "StringException_AutoGen_0xC83B3D89";

/// Code points in little-endian units of some width.
std::string Bytes(std::u32string const& codePoints, unsigned unitBytes)
{
    std::string bytes;
    for (char32_t const c : codePoints) {
        for (unsigned i = 0; i < unitBytes; ++i) {
            bytes += static_cast<char>(c >> i * 8);
        }
    }
    return bytes;
}

std::string Declaration(std::string const& attributes)
{
    return "<?xml version='1.0' " + attributes + "?><a/>";
}

TEST(TTextEncodingTest, MarksAndDeclarationsTellTheEncoding)
{
    std::tuple<int, std::string, EncodingType> const cases[] = {
        // The start of a declaration in wide units, at its bounds and with one byte wrong.
        {__LINE__, Bytes(U"<?xml", 2), EncodingUtf8},
        {__LINE__, Bytes(U"<?xml", 2) + " ", EncodingUtf16LE},
        {__LINE__, Bytes(U"<?xm\u016C ", 2), EncodingUtf8},
        {__LINE__, Bytes(U"<?xml", 4), EncodingUtf8},
        {__LINE__, Bytes(U"<?xml", 4) + " ", EncodingUtf32LE},
        {__LINE__, Bytes(U"<?xmk ", 4), EncodingUtf8},
        // Names, and what is around them.
        {__LINE__, Declaration("encoding=\"ISO-8859-1\""), EncodingLatin1},
        {__LINE__, Declaration("encoding \t=\r\n 'utf-32le'"), EncodingUtf32LE},
        {__LINE__, Declaration("encoding'iso-8859-1'"), EncodingLatin1},
        {__LINE__, Declaration("encoding\v'iso-8859-1'"), EncodingUtf8},
        {__LINE__, Declaration("encoding=iso-8859-1"), EncodingUtf8},
        {__LINE__, Declaration("encoding='iso-8859-1\""), EncodingUtf8},
        {__LINE__, Declaration("Encoding='iso-8859-1'"), EncodingUtf8},
        {__LINE__, Declaration("encoding='utf-16'"), EncodingUtf8},
        {__LINE__, Declaration("noencoding='utf-16le' encoding='iso-8859-1'"), EncodingUtf16LE},
        {__LINE__, "<?xml encoding='iso-8859-1'", EncodingUtf8},
        {__LINE__, "<?xml?> encoding='iso-8859-1'?>", EncodingUtf8},
        {__LINE__, "", EncodingUtf8},
    };
    for (auto const& [line, bytes, expected] : cases) {
        // A block of exactly this size, so that a sanitizer sees a byte read too many.
        TTextEncoding const encoding(std::vector<unsigned char>(bytes.begin(), bytes.end()));
        EXPECT_EQ(encoding.Encoding(), expected) << "line " << line;
    }
    EXPECT_EQ(DetectEncoding(nullptr, 100), std::make_pair(EncodingUtf8, 0));
}

// What pieces become, wherever they are cut, is the fuzzer's.
TEST(TTextEncodingTest, AnObjectKeepsInMindWhetherItsFirstPieceHasCome)
{
    std::u32string many = U"\uFEFF"; // more than are converted at once
    for (char32_t c = 0x10001; many.size() < 3000; ++c) {
        many += c;
    }
    std::string const bytes = Bytes(many, 4);
    TTextEncoding encoding(bytes.data(), bytes.size());
    TTextEncoding copy(encoding);
    for (TTextEncoding* each : {&encoding, &copy}) {
        // Empty pieces do not count as the first one.
        EXPECT_EQ(each->ToTString(nullptr, 7) + each->ToTString("", 0), TString());
        EXPECT_EQ(each->ToTString(std::vector<char>(bytes.begin(), bytes.end())),
                  TString::fromStdUString(many.substr(1)));
        EXPECT_EQ(each->ToTString("\xFF\xFE\0\0", 4), TString(u"\uFEFF"));
    }
}

TEST(TTextEncodingTest, APieceOfMoreThanATextHoldsIsRefusedBeforeItIsRead)
{
    constexpr unsigned long kTooMany = TString::kMaxLength + 1ul;
    std::pair<std::string, unsigned long> const cases[] = {
        {"plain", 1}, {"<?xml encoding='iso-8859-1'?>", 1}, {"\xFF\xFE", 2}, {"\xFF\xFE\0\0"s, 4}};
    for (auto const& [start, unitBytes] : cases) {
        for (unsigned long const units : {kTooMany, UINT_MAX + 2ul, LONG_MAX / unitBytes - 1}) {
            SCOPED_TRACE(testing::Message() << start << ": " << units);
            TTextEncoding encoding(start.data(), start.size());
            auto const size = static_cast<unsigned long>(encoding.BOMLength()) + units * unitBytes;
            EXPECT_KOR_ERROR(encoding.ToTString(start.data(), size), StringException, kTooLong);
        }
    }
}

TEST(TTextEncodingTest, NamedCodecsDecodeAndTellFailure)
{
    std::tuple<int, char const*, char const*, TString, std::optional<bool>> const cases[] = {
        {__LINE__, "\xE4\x80", "windows-1252", u"\u00E4\u20AC", false},
        {__LINE__, "z\xFF", "utf-8", u"z\uFFFD", true},
        {__LINE__, "z\xFF", "", u"z\uFFFD", {}},
        {__LINE__, "z\xFF", nullptr, u"z\uFFFD", {}},
        {__LINE__, "", "utf-8", u"", {}},
        {__LINE__, nullptr, "utf-8", u"", {}},
    };
    for (auto const& [line, data, name, text, told] : cases) {
        for (bool const before : {false, true}) {
            bool failed = before;
            EXPECT_EQ(TStringFromEncoding(data, name, &failed), text) << "line " << line;
            EXPECT_EQ(failed, told.value_or(before)) << "line " << line;
        }
        EXPECT_EQ(TString::fromEncoding(data, name, nullptr), text) << "line " << line;
    }
}

} // namespace
