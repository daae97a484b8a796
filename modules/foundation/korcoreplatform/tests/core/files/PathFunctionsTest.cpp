#include "korcoreplatform/main/core/files/PathFunctions.h"

#include "korcoreplatform/main/core/runtime/OptLogStackOnFileError.h"
#include "korcoreplatform/tests/support/RecordingLogger.h"
#include "korcoreplatform/tests/support/TemporaryFolder.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr char kDestinationExists[] = "TPathException_AutoGen_0x7C7DFAB4";
constexpr char kNonFile[] = "TPathException_AutoGen_0x0C5F149A";
constexpr char kNotCopied[] = "TPathException_AutoGen_0xF7FF15E2";
constexpr char kNoSize[] = "TPathException_AutoGen_0x7F4B3D5C";
constexpr char kNoDirectory[] = "TPathException_AutoGen_0x4C0573C8";
constexpr char kNoFile[] = "TPathException_AutoGen_0xD1E89D61";
constexpr char kNoLink[] = "TPathException_AutoGen_0xC4B62E99";
constexpr char kNoTime[] = "TPathException_AutoGen_0xBF27D89B";
constexpr char kNotFlushed[] = "KorvelException_AutoGen_0xB5B83DCB";

using Texts = std::vector<TString>;

/// One of each kind: file (5 bytes), dir, fifo, and the links toFile, toDir, dangling, loop.
struct EveryKind : TidyFolder
{
    EveryKind()
    {
        Write("file", "12345");
        std::filesystem::create_directory(Native("dir"));
        ::mkfifo(Native("fifo").c_str(), 0600);
        std::filesystem::create_symlink("file", Native("toFile"));
        std::filesystem::create_symlink("dir", Native("toDir"));
        std::filesystem::create_symlink("nowhere", Native("dangling"));
        std::filesystem::create_symlink("loop", Native("loop"));
    }
};

TEST(PathFunctionsTest, TellsEveryKindOfEntryApart)
{
    EveryKind const folder;
    std::tuple<char16_t const*, bool, bool, bool, bool, long long> const cases[] = {
        {u"file", true, true, false, false, 5},
        {u"dir", true, false, true, false, -1},
        {u"fifo", true, false, false, false, -1},
        {u"toFile", true, true, false, true, 5},
        {u"toDir", true, false, true, true, -1},
        {u"dangling", true, false, false, true, -1},
        {u"loop", true, false, false, true, -1},
        {u"missing", false, false, false, false, -1},
        {u"file/inner", false, false, false, false, -1},
    };
    for (auto const& [name, exists, isFile, isDirectory, isLink, size] : cases) {
        TPath const path = folder / name;
        SCOPED_TRACE(path);
        EXPECT_EQ((std::array{PathExists(path), IsRegularFile(path, true), FileExists(path),
                              IsDirectory(path, true), DirectoryExists(path)}),
                  (std::array{exists, isFile, isFile, isDirectory, isDirectory}));
        EXPECT_EQ(GetFileSize(path), size);
        if (exists) {
            EXPECT_EQ(
                (std::array{IsRegularFile(path, false), IsDirectory(path, false), IsSymlink(path)}),
                (std::array{isFile, isDirectory, isLink}));
        } else {
            EXPECT_KOR_ERROR(IsRegularFile(path, false), TPath::Exception, kNoFile);
            EXPECT_KOR_ERROR(IsDirectory(path, false), TPath::Exception, kNoDirectory);
            EXPECT_KOR_ERROR(IsSymlink(path), TPath::Exception, kNoLink);
        }
        if (size < 0) {
            EXPECT_KOR_ERROR_TEXT(
                FileSize(path), TPath::Exception, kNoSize,
                TFormat(u"Unable to determine size of file '%1' (file does not exist)", path));
        }
    }
    EXPECT_FALSE(PathExists(TPath()));
}

TEST(PathFunctionsTest, RemovesOneEntryAndNothingBelow)
{
    EveryKind const folder;
    folder.Write("dir/inner", "");
    EXPECT_FALSE(RemovePath(folder / u"dir"));
    for (char16_t const* name : {u"toDir", u"dir/inner", u"dir", u"dangling", u"toFile", u"gone"}) {
        EXPECT_TRUE(RemovePath(folder / name)) << TString(name);
        EXPECT_FALSE(PathExists(folder / name)) << TString(name);
    }
    EXPECT_EQ(folder.Read("file"), "12345");
}

TEST(PathFunctionsTest, StackIsAttachedExactlyWhileTheOptionIsOn)
{
    for (bool const isOn : {true, false}) {
        OptLogStackOnFileError::SetLogStackOnFileError(isOn);
        try {
            FileSize(u"/missing");
            ADD_FAILURE() << "did not throw";
        } catch (TPath::Exception const& e) {
            EXPECT_EQ(e.GetMessages().size() > 1, isOn) << e.what();
        }
    }
}

TEST(PathFunctionsTest, CopyTreatsTheDestinationAsTheOptionSays)
{
    using std::filesystem::last_write_time;
    constexpr auto kFail = CopyOption::FailIfExists;
    constexpr auto kUnlessSame = CopyOption::OverwriteUnlessSame;
    constexpr auto kAlways = CopyOption::Overwrite;
    constexpr auto kIfNewer = CopyOption::OverwriteIfNewer;
    struct
    {
        int line;
        char const *from, *to;
        CopyOption option;
        std::string errorId;           ///< Empty: no error.
        char const *written, *content; ///< What is looked at afterwards, and what it holds.
        std::string log = {};          ///< With F for the folder.
    } const cases[] = {
        {__LINE__, "file", "new", kFail, "", "new", "12345"},
        {__LINE__, "file", "toDir", kFail, "", "dir/file", "12345"},
        {__LINE__, "toFile", "dir", kFail, "", "dir/toFile", "12345"},
        {__LINE__, "file", "old", kFail, kDestinationExists, "old", "old",
         "Destination exists: not copying 'F/file' to 'F/old'"},
        {__LINE__, "toFile", "file", kUnlessSame, "", "file", "12345"},
        {__LINE__, "file", "old", kUnlessSame, "", "old", "12345"},
        {__LINE__, "missing", "dangling", kUnlessSame, "", "old", "old"}, // neither has a canon
        {__LINE__, "file", "old", kIfNewer, "", "old", "12345"},
        {__LINE__, "old", "file", kIfNewer, "", "file", "12345"},
        {__LINE__, "same", "file", kIfNewer, "", "file", "12345"}, // of the same time
        {__LINE__, "file", "dangling", kIfNewer, "", "dangling", "12345"},
        {__LINE__, "missing", "old", kIfNewer, kNoTime, "old", "old"},
        {__LINE__, "file", "old", static_cast<CopyOption>(9), "", "old", "12345"},
        {__LINE__, "old", "toFile", kAlways, "", "file", "12345"}, // the link is replaced
        {__LINE__, "file", "fifo", kAlways, kNonFile, "file", "12345",
         "Unable to copy file 'F/file' to existing non-file 'F/fifo'"},
        {__LINE__, "dir/dir", "", kAlways, kNonFile, "file", "12345",
         "Unable to copy file 'F/dir/dir' to existing non-file 'F/dir'"},
        {__LINE__, "missing", "old", kAlways, kNotCopied, "old", "(missing)",
         "Error copying file 'F/missing' to 'F/old' (Cannot open F/missing for input): No such "
         "file or directory"},
        {__LINE__, "dir", "new", kAlways, kNotCopied, "new", "(missing)",
         "Error copying file 'F/dir' to 'F/new' (Cannot open F/dir for input): file to open "
         "is a directory"},
        {__LINE__, "file", "no/new", kAlways, kNotCopied, "file", "12345",
         "Error copying file 'F/file' to 'F/no/new' (Cannot create F/no/new for output)"},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.line);
        EveryKind const folder;
        folder.Write("old", "old");
        folder.Write("same", "same");
        auto const now = last_write_time(folder.Native("file"));
        last_write_time(folder.Native("same"), now);
        last_write_time(folder.Native("old"), now - std::chrono::seconds(2));
        LogRecording const log;
        std::vector<std::string> expected;
        auto const copy = [&] { CopyFile(folder / c.from, folder / c.to, c.option); };
        if (c.errorId.empty()) {
            copy();
        } else {
            EXPECT_KOR_ERROR(copy(), TPath::Exception, c.errorId);
        }
        EXPECT_EQ(folder.Read(c.written), c.content);
        if (!c.log.empty()) {
            TString line = TString::fromStdString("Error: " + c.log + " [" + c.errorId + "]");
            line.replace(u"F/", folder.Path().NativeString() + u"/");
            expected.push_back(line.toStdString());
        }
        EXPECT_EQ(log.Lines(), expected);
    }
}

/// The walk over a list of elements that defines the normal form.
TPath NormalPathStepByStep(TPath const& path)
{
    std::vector<TString> list = path.toVector();
    for (std::size_t i = 0; i < list.size();) {
        auto const here = list.begin() + static_cast<std::ptrdiff_t>(i);
        if (list[i] == u".") {
            list.erase(here);
        } else if (list[i] == u".." && i > 0 && list[i - 1] != u"..") {
            list.erase(here);
            if (list[i - 1] != u"/") {
                list.erase(list.begin() + static_cast<std::ptrdiff_t>(--i));
            }
        } else {
            ++i;
        }
    }
    return TPath::fromVector(list);
}

TEST(PathFunctionsTest, NormalPathKeepsWhatTheTextMeans)
{
    char16_t const* const pieces[] = {u"/",  u"/", u"/",    u"//",      u".",   u"..",
                                      u"..", u"a", u"name", u"C:",      u"/./", u"/../",
                                      u"\\", u"?", u"UNC",  u"//?/UNC/"};
    std::mt19937 random(302);
    for (int i = 0; i < 50000; ++i) {
        TString text;
        for (unsigned n = random() % 9; n > 0; --n) {
            text += pieces[random() % std::size(pieces)];
        }
        TPath const path = TPath::MakePath(text);
        ASSERT_EQ(NormalPath(path).NativeString(), NormalPathStepByStep(path).NativeString())
            << text;
    }
}

TEST(PathFunctionsTest, PiecesOfNames)
{
    // The path, its directory, name, title, extension, and the path without extension.
    char16_t const* const cases[][6] = {
        {u"a/B.TXT", u"a/", u"B.TXT", u"B", u"txt", u"a/B"},
        {u"/name", u"/", u"name", u"name", u"", u"/name"},
        {u"a.d/.profile", u"a.d/", u".profile", u".profile", u"", u"a.d/.profile"},
        {u"a/bc/", u"a/b", u"bc", u"bc", u"", u"a/bc"}, // callers rely on the second
    };
    for (auto const& c : cases) {
        Texts const pieces = {GetFileDirectory(c[0]), GetFileName(c[0]), GetFileTitle(c[0]),
                              FileExtension(c[0]), RemoveFileExtension(c[0])};
        EXPECT_EQ(pieces, Texts(c + 1, c + 6));
    }
}

TEST(PathFunctionsTest, HomeIsThatOfTheUserList)
{
    passwd const* const user = ::getpwuid(::getuid());
    ASSERT_NE(user, nullptr);
    TString const home(user->pw_dir);
    EXPECT_EQ(UserName(), TString(user->pw_name));
    auto const withOtherHome = [](auto const& check) {
        ::setenv("HOME", "/elsewhere", 1);
        check();
        std::_Exit(testing::Test::HasFailure() ? 1 : 0);
    };
    EXPECT_EXIT(withOtherHome([&] { EXPECT_EQ(HomePath().NativeString(), home); }),
                testing::ExitedWithCode(0), "");
    if (::getuid() == 0) { // only root can become somebody whom the system does not know
        EXPECT_EXIT(withOtherHome([] {
                        ASSERT_EQ(::setuid(2123456789), 0);
                        EXPECT_EQ(HomePath().NativeString(), TString(u"/elsewhere"));
                        EXPECT_EQ(UserName(), TString());
                        ::unsetenv("HOME");
                        EXPECT_EQ(HomePath().NativeString(), TString());
                    }),
                    testing::ExitedWithCode(0), "");
    }
    std::pair<char16_t const*, TString> const cases[] = {
        {u"~", home},       {u"~/", home},   {u"~/a/b", home + u"/a/b"}, {u"~\\a", home + u"/a"},
        {u"~x/y", u"~x/y"}, {u"a/~", u"a/~"}};
    for (auto const& [path, expanded] : cases) {
        EXPECT_EQ(ExpandHomePath(TPath::MakePath(path)).NativeString(), expanded) << TString(path);
    }
}

TEST(PathFunctionsTest, PathsThatTheSystemKnows)
{
    EveryKind const folder;
    TPath const before = CurrentPath();
    ChangeDirectory(folder / u"toDir");
    EXPECT_EQ(CurrentPath().NativeString(), (folder / u"dir").NativeString());
    EXPECT_EQ(CanonicalPath(u"../toFile").NativeString(), (folder / u"file").NativeString());
    ChangeDirectory(folder / u"missing");
    EXPECT_EQ(CurrentPath().NativeString(), (folder / u"dir").NativeString());
    ChangeDirectory(before);
    EXPECT_TRUE(CanonicalPath(folder / u"missing").IsEmpty());
    EXPECT_EQ(CanonicalPath(u"//server/tmp/..").NativeString(), TString(u"//server/"));

    TPath const executable = CanonicalPath(u"/proc/self/exe");
    static int const s_ofThisModule = 0;
    EXPECT_EQ(ExecutableFilename().NativeString(), executable.NativeString());
    EXPECT_EQ(ModuleFilename(&s_ofThisModule).NativeString(), executable.NativeString());
    for (TPath const& path :
         {ExecutablePath(), ModulePath(TPath()), ModuleDirectory(&s_ofThisModule)}) {
        EXPECT_EQ(path, executable.Parent());
    }
}

TEST(PathFunctionsTest, SaveWritesAndLoadReadsWholeFiles)
{
    std::tuple<char16_t const*, bool, bool, char const*, char const*> const cases[] = {
        {u"a\n\u00E9", false, false, "", "a\n\xC3\xA9"},
        {u"x\n", true, true, "a\n\xC3\xA9", "a\n\xC3\xA9x\r\n"},
        {u"", true, true, "a\n\xC3\xA9x\r\n", "a\n\xC3\xA9x\r\n"},
        {u"", false, false, "", ""},
    };
    TemporaryFolder const folder;
    LogRecording const log;
    for (auto const& [text, toDos, append, atCallback, bytes] : cases) {
        SCOPED_TRACE(bytes);
        int calls = 0;
        SaveXMLFile(folder / u"f", text, toDos, append, [&, there = atCallback](TPath const& path) {
            EXPECT_EQ(path.NativeString(), (folder / u"f").NativeString());
            EXPECT_EQ(folder.Read("f"), there);
            ++calls;
        });
        EXPECT_EQ(calls, 1);
        EXPECT_EQ(folder.Read("f"), bytes);
    }
    EXPECT_THROW(SaveXMLFile(folder / u"f", u"x", false, false, nullptr), std::bad_function_call);
    EXPECT_EQ(log.Lines(), std::vector<std::string>());
    folder.Write("f", "a\r\nb");
    EXPECT_EQ(LoadXMLFile(folder / u"f", false), TString(u"a\r\nb"));
    EXPECT_EQ(LoadXMLFile(folder / u"f", true), TString(u"a\nb"));
}

TEST(PathFunctionsTest, SaveToAFullDeviceIsLogged)
{
    auto const nothing = [](TPath const&) {};
    TidyFolder const watch;
    LogRecording const log;
    SaveXMLFile(u"/dev/full", TString(u'x', 40000), true, false, nothing); // more than is buffered
    EXPECT_EQ(log.Lines(),
              (std::vector<std::string>{
                  "Error: Unable to write to \"/dev/full\". [KorvelException_AutoGen_0x8CA372D6]",
                  "Info: Unexpected file size for \"/dev/full\". Expected size: 40000  Actual "
                  "size: 0"}));
    EXPECT_KOR_ERROR(SaveXMLFile(u"/dev/full", u"x", false, false, nothing), KorvelException,
                     kNotFlushed);
    EXPECT_EQ(log.Lines().size(), 2u + 5 + 1); // a warning an attempt, then the error
}

} // namespace
