#include "korcoreplatform/main/core/files/TFile.h"

#include "korcoreplatform/main/core/files/PathFunctions.h"
#include "korcoreplatform/main/core/runtime/OptLogStackOnFileError.h"
#include "korcoreplatform/tests/support/RecordingLogger.h"
#include "korcoreplatform/tests/support/TemporaryFolder.h"

#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace std::string_literals;

namespace {

constexpr char kOpenFailed[] = "TIOException_AutoGen_0x3DE8E9E4";
constexpr char kOpenLaterFailed[] = "TIOException_AutoGen_0x3470DA84";
constexpr char kReadFailed[] = "TIOException_TFile_0x47B61D6A";
constexpr std::size_t kPieceBytes = 64 * 1024; ///< What the loaders read at a time.

std::string Text(std::vector<char> const& bytes)
{
    return std::string(bytes.begin(), bytes.end());
}

/// The units of a text as bytes of the machine's order.
template <class Unit>
std::string Bytes(std::basic_string<Unit> const& units)
{
    return std::string(reinterpret_cast<char const*>(units.data()), units.size() * sizeof(Unit));
}

TEST(TFileTest, AFailedOpeningNamesTheFileAndLeavesNothingOpen)
{
    TidyFolder const folder;
    folder.Write("secret", "x");
    ::chmod(folder.Native("secret").c_str(), 0);
    std::tuple<TPath, TIO::OpenMode, TString> const cases[] = {
        {u"/nowhere/x", TIO::ReadOnly, u"No such file or directory"},
        {u"/nowhere/x", TIO::WriteOnly, u"No such file or directory"},
        {folder.Path(), TIO::ReadOnly, u"file to open is a directory"},
        {folder / u"secret", TIO::ReadOnly, u"Permission denied"},
    };
    for (auto const& [path, mode, reason] : cases) {
        if (reason == u"Permission denied" && ::geteuid() == 0) {
            continue; // nothing is denied to this user
        }
        SCOPED_TRACE(path);
        TFile later;
        EXPECT_KOR_ERROR_TEXT(TFile(path, mode), TIO::Exception, kOpenFailed,
                              TFormat(u"Unable to open file '%1': %2", path, reason));
        EXPECT_KOR_ERROR_TEXT(later.Open(path, mode), TIO::Exception, kOpenLaterFailed, reason);
        EXPECT_KOR_ERROR_TEXT(later.Open(mode), TIO::Exception, kOpenLaterFailed, reason);
    }
    folder.Write("cut", "x");
    TPath const cut = folder / TPath::MakePath(TString(u"cut\0.old", 8));
    EXPECT_THROW(TFile(cut, TIO::ReadOnly), TIO::Exception);
    EXPECT_THROW(TFile().Open(cut, TIO::ReadOnly), TIO::Exception);
    EXPECT_THROW(CopyFile(cut, folder / u"copy", CopyOption::Overwrite), TPath::Exception);
}

TEST(TFileTest, AFailedOpeningIsLoggedWithItsStackWhenAskedFor)
{
    LogRecording const log;
    EXPECT_THROW(TFile(u"/nowhere/x", TIO::ReadOnly), TIO::Exception);
    EXPECT_TRUE(log.Records().empty());
    OptLogStackOnFileError::SetLogStackOnFileError(true);
    EXPECT_THROW(TFile(u"/nowhere/x", TIO::ReadOnly), TIO::Exception);
    OptLogStackOnFileError::SetLogStackOnFileError(false);
    ASSERT_EQ(log.Lines(), std::vector{"Warn: file-open-error"s});
    auto const value = log.Records()[0].event.GetValue();
    auto const& values = dynamic_cast<TLog::Object const&>(*value).GetValues();
    auto const text = [&](char16_t const* name) {
        return dynamic_cast<TLog::Literal&>(*values.at(name)).GetString();
    };
    EXPECT_EQ(text(u"filename"), TString(u"/nowhere/x"));
    EXPECT_EQ(text(u"error"), TString(u"No such file or directory"));
    EXPECT_TRUE(text(u"stack").contains(u"\n")) << text(u"stack"); // forced: several frames
}

TEST(TFileTest, AnOpenFileIsReadWrittenAndMovedIn)
{
    TemporaryFolder const folder;
    TFile file(folder / u"a", TIO::ReadWrite | TIO::Truncate);
    EXPECT_NE(::fcntl(file.handle(), F_GETFD) & FD_CLOEXEC, 0);
    EXPECT_EQ(file.Write("abc\0d", 5), 5);
    EXPECT_TRUE(file.AtEnd());
    EXPECT_TRUE(file.Seek(1));
    EXPECT_EQ(Text(file.Peek(2)), "bc");
    EXPECT_EQ(Text(file.ReadAll()), "bc\0d"s);
    EXPECT_TRUE(file.Flush());
    unsigned char* const mapped = file.Map(4, 1);
    ASSERT_NE(mapped, nullptr);
    EXPECT_EQ(*mapped, 'd');
    EXPECT_TRUE(file.Unmap(mapped));
    EXPECT_KOR_ERROR(file.Open(TIO::ReadOnly), TIO::Exception, kOpenLaterFailed);
    EXPECT_TRUE(file.IsOpen());
    EXPECT_TRUE(file.Open(folder / u"b", TIO::WriteOnly));
    EXPECT_EQ(file.Path(), folder / u"b");
    EXPECT_KOR_ERROR(file.Peek(1), TIO::Exception, "TIOException_AutoGen_0x7A55F773");
    EXPECT_KOR_ERROR_TEXT(file.Read(1), TIO::Exception, kReadFailed,
                          u"IO error, attempting to read -1 bytes from file. (error=%2)");
    file.Close();
    EXPECT_EQ(file.handle(), -1);
    EXPECT_EQ(file.Write("x"), -1);
}

TEST(TFileTest, TextIsLoadedInItsEncoding)
{
    std::u32string codePoints = U"\uFEFF";
    std::u16string units = u"\uFEFF";
    std::string latin1 = "<?xml version='1.0' encoding='iso-8859-1'?>";
    std::u16string latin1Units(latin1.begin(), latin1.end());
    for (char32_t c = 1; c < 40000; ++c) { // more than one piece
        codePoints += c % 3 == 0 ? 0x10000 + c : c;
        units += static_cast<char16_t>(c);
        latin1 += static_cast<char>(c);
        latin1Units += static_cast<char16_t>(c % 256);
    }
    std::string const ascii(512, 'x');
    std::tuple<int, std::string, TString> const cases[] = {
        {__LINE__, "", u""},
        {__LINE__, "\xEF\xBB\xBF", u""},
        {__LINE__, "\xEF\xBB\xBF\r\nb\r\r\n\0\xC3\xA9\0"s, TString(u"\r\nb\r\r\n\0\u00E9\0", 9)},
        {__LINE__, ascii, TString(ascii.c_str())},
        {__LINE__, ascii + "\xC3\xA9", TString(ascii.c_str()) + u"\u00E9"},
        {__LINE__, "\xFF\xFE", u""},
        {__LINE__, Bytes(u"\uFEFF\r\na"s) + "x", u"\r\na"}, // half a unit at the end
        {__LINE__, Bytes(units), TString::fromStdU16String(units.substr(1))},
        {__LINE__, Bytes(U"\uFEFF\U0001F600\r\n"s) + "xyz", u"\U0001F600\r\n"},
        {__LINE__, Bytes(codePoints) + "x", TString::fromStdUString(codePoints.substr(1))},
        {__LINE__, latin1, TString::fromStdU16String(latin1Units)},
        {__LINE__, std::string(10000000, 'x'), TString(u'x', 10000000)}, // in large pages
    };
    TidyFolder const folder;
    TPath const path = folder / u"text";
    for (auto const& [line, bytes, text] : cases) {
        SCOPED_TRACE(line);
        folder.Write("text", bytes);
        EXPECT_TRUE(TFile::LoadTextFile(path, false) == text); // too long to be shown
        EXPECT_TRUE(TFile::LoadUtf8File(path, false) == text.toStdString());
        TString normal = text;
        normal.dosToUnix();
        EXPECT_TRUE(TFile::LoadTextFile(path, true) == normal);
        EXPECT_TRUE(TFile::LoadUtf8File(path, true) == normal.toStdString());
        EXPECT_TRUE(Text(TFile::LoadBinaryFile(path)) == bytes);
        std::vector<unsigned char> const unsignedBytes(bytes.begin(), bytes.end());
        EXPECT_TRUE(TFile::LoadUnsignedBinaryFile(path) == unsignedBytes);
    }
}

TEST(TFileTest, Utf8ReadInPiecesIsTheTextOfTheWhole)
{
    TemporaryFolder const folder;
    TPath const path = folder / u"text";
    std::mt19937 random(303); // fixed seed: a failure can be run again
    for (std::string const part :
         {"\xC3\xA9", "\xE4\xB8\xAD", "\xF0\x9F\x98\x80",             // characters
          "\xC3", "\xE4\xB8", "\xF0\x9F\x98", "\xF0",                 // without their end
          "\x80", "\x80\x80\x80\x80", "\xF0\x9F\x98\x80\x80", "\xFF", // without a start
          "\xE0\x80\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xC1\x81", "a"}) {
        for (std::size_t before = 0; before <= 5; ++before) {
            std::string bytes(kPieceBytes - before, 'a');
            bytes += part;
            if (before % 2 == 0) { // a second piece, or a cut one
                bytes += std::string(kPieceBytes - random() % 5, 'b') + part;
            }
            if (random() % 2 == 0) { // the first piece has an ill-formed part, or none
                bytes.replace(600, 5, "\xE4\xB8\xFF\x80z");
            }
            folder.Write("text", bytes);
            ASSERT_TRUE(TFile::LoadTextFile(path, false) == TString::fromStdString(bytes))
                << testing::PrintToString(part) << before;
        }
    }
}

TEST(TFileTest, AFileThatIsNotWhatItsSizeSaysIsCutFilledOrRefused)
{
    EXPECT_TRUE(TFile::LoadTextFile(u"/dev/null", true).isEmpty());
    EXPECT_TRUE(TFile::LoadUtf8File(u"/proc/self/status", true).empty()); // of size 0
    TPath const shorter(u"/sys/kernel/mm/transparent_hugepage/enabled");
    if (QFile::exists(shorter.NativeString().toQString())) {
        std::string const text = TFile::LoadUtf8File(shorter, false);
        EXPECT_EQ(text.find('\n'), text.size() - 1); // some choices in one line
        EXPECT_EQ(TFile::LoadTextFile(shorter, false), TString(text.c_str()));
        EXPECT_EQ(Text(TFile::LoadBinaryFile(shorter)), text);
        std::vector<unsigned char> bytes(text.begin(), text.end());
        bytes.resize(static_cast<std::size_t>(TFile(shorter).Size()));
        EXPECT_EQ(TFile::LoadUnsignedBinaryFile(shorter), bytes);
    }
    TPath const unreadable(u"/sys/class/net/lo/speed"); // of some size, and has no answer
    if (QFile::exists(unreadable.NativeString().toQString())) {
        TidyFolder const watch;
        for (auto const& load : {+[](TPath const& path) { TFile::LoadTextFile(path, false); },
                                 +[](TPath const& path) { TFile::LoadUtf8File(path, false); },
                                 +[](TPath const& path) { TFile::LoadBinaryFile(path); },
                                 +[](TPath const& path) { TFile::LoadUnsignedBinaryFile(path); }}) {
            EXPECT_KOR_ERROR_TEXT(
                load(unreadable), TIO::Exception, kReadFailed,
                u"IO error attempting to read from file \"/sys/class/net/lo/speed\".");
        }
    }
}

TEST(TFileTest, BytesAreWrittenOverWhatWasThere)
{
    TidyFolder const folder;
    for (std::string const& text : {"longer"s, "a\0\xFF"s, ""s}) {
        std::vector<unsigned char> const bytes(text.begin(), text.end());
        TFile::WriteUnsignedBinaryFile(folder / u"file", bytes);
        EXPECT_EQ(folder.Read("file"), text);
    }
    std::vector<unsigned char> const large(1 << 20);
    EXPECT_KOR_ERROR(TFile::WriteUnsignedBinaryFile(u"/dev/full", large), TIO::Exception,
                     "TIOException_AutoGen_0x91F378B3");
}

/// Fails to flush a number of times.
class StubbornFile : public TFile
{
public:
    using TFile::TFile;
    bool Flush() override { return ++calls > failures; }

    int failures = 0;
    int calls = 0;
};

TEST(TFileTest, FlushingIsTriedAgainAsOftenAsAsked)
{
    constexpr char kGaveUp[] = "KorvelException_AutoGen_0xB5B83DCB";
    LogRecording const log;
    StubbornFile file(TPath(u"/x/y"));
    EXPECT_TRUE(FlushFileWithRetry(file, 1));
    EXPECT_KOR_ERROR(FlushFileWithRetry(file, 0), KorvelException, kGaveUp);
    EXPECT_EQ(file.calls, 1);
    file.failures = 2;
    EXPECT_TRUE(FlushFileWithRetry(file, -1)); // does not stop at any number
    EXPECT_EQ(file.calls, 3);
    TFile full(u"/dev/full", TIO::WriteOnly);
    EXPECT_EQ(full.Write("x"), 1);
    EXPECT_KOR_ERROR(FlushFileWithRetry(full, 2), KorvelException, kGaveUp);
    std::vector<std::string> const expected = {
        "Error: Unable to flush \"/x/y\" afer exhausting all retries.  Giving up. "
        "[KorvelException_AutoGen_0xB5B83DCB]",
        "Warn: Unable to flush \"/x/y\".  Wating 500 milliseconds before retry.  -1 retries left.",
        "Warn: Unable to flush \"/dev/full\".  Wating 500 milliseconds before retry.  "
        "2 retries left.",
        "Warn: Unable to flush \"/dev/full\".  Wating 500 milliseconds before retry.  "
        "1 retries left.",
        "Error: Unable to flush \"/dev/full\" afer exhausting all retries.  Giving up. "
        "[KorvelException_AutoGen_0xB5B83DCB]",
    };
    EXPECT_EQ(log.Lines(), expected);
}

} // namespace
