#include "korcoreplatform/main/core/files/TPath.h"

#include "korcoreplatform/tests/support/KorTest.h"
#include "korsys/main/system/TPathCore.h"

namespace {

constexpr char kElementPosition[] = "TPathException_AutoGen_0xE27C2B2D";
constexpr char kSeparatorPosition[] = "TPathException_AutoGen_0xDE3B1FC7";
constexpr char kIndex[] = "TPathException_AutoGen_0x6C57764F";
constexpr char kBeyondEnd[] = "TPathException_AutoGen_0x2AFC3482";
constexpr char kBeyondBeginning[] = "TPathException_AutoGen_0xA7D4C6D2";
constexpr char kOutOfSync[] = "TPathException_AutoGen_0xD1461535";

constexpr char16_t kNoLetter = 0xFFFF;

using Texts = std::vector<TString>;

TPath Verbatim(char16_t const* text)
{
    return TPath::MakePath(text);
}

/// Any text of the characters that paths are about.
TString RandomText(std::mt19937& random)
{
    constexpr char16_t kUnits[] = u"///?:..\\UNaB\u00C4\u0130";
    TString text;
    for (unsigned n = random() % 24; n > 0; --n) {
        text += kUnits[random() % (std::size(kUnits) - 1)];
    }
    return text;
}

TEST(TPathTest, EveryPartOfAPath)
{
    std::tuple<int, char16_t const*, char16_t const*, int, char16_t const*, int, char16_t const*,
               int, char16_t const*> const cases[] = {
        {__LINE__, u"", u"", -1, u"", -1, u"", -1, u""},
        {__LINE__, u"/", u"", 0, u"/", -1, u"", -1, u""},
        {__LINE__, u"//", u"", 0, u"/", -1, u"", -1, u"/"},
        {__LINE__, u"///", u"//", 2, u"///", -1, u"", -1, u"//"},
        {__LINE__, u"/a/b.c.d", u"", 0, u"/", 3, u"b.c.d", 7, u"/a"},
        {__LINE__, u"a//b", u"", -1, u"", 3, u"b", -1, u"a/"},
        {__LINE__, u"a/b/", u"", -1, u"", 4, u"", -1, u"a/b"},
        {__LINE__, u"..x", u"", -1, u"", 0, u"..x", -1, u""},
        {__LINE__, u"a.", u"", -1, u"", 0, u"a.", 2, u""},
        {__LINE__, u"/x/..", u"", 0, u"/", 3, u"..", -1, u"/x"},
        {__LINE__, u"C:", u"C:", -1, u"C:", 0, u"C:", -1, u""},
        {__LINE__, u"C:/", u"C:", 2, u"C:/", 3, u"", -1, u""},
        {__LINE__, u"C:/a", u"C:", 2, u"C:/", 3, u"a", -1, u"C:/"},
        {__LINE__, u"C:x/y", u"C:", -1, u"C:", 4, u"y", -1, u"C:x"},
        {__LINE__, u"1:/a", u"", -1, u"", 3, u"a", -1, u"1:"},
        {__LINE__, u"\u00C4:/a", u"\u00C4:", 2, u"\u00C4:/", 3, u"a", -1, u"\u00C4:/"},
        {__LINE__, u"//server", u"//server", -1, u"//server", 2, u"server", -1, u"/"},
        {__LINE__, u"//server/", u"//server", 8, u"//server/", 9, u"", -1, u""},
        {__LINE__, u"//server/share", u"//server", 8, u"//server/", 9, u"share", -1, u"//server/"},
        {__LINE__, u"//?/C:/x", u"", 0, u"/", 7, u"x", -1, u"//?/C:"},
        {__LINE__, u"//?/UNC/s/x.y", u"//?", 3, u"//?/", 10, u"x.y", 12, u"//?/UNC/s"},
        {__LINE__, u"a\\b.c", u"", -1, u"", 0, u"a\\b.c", 4, u""},
    };
    for (auto const& [line, text, rootName, rootDirectory, rootPath, filenameIndex, name,
                      extensionIndex, parent] : cases) {
        SCOPED_TRACE(line);
        TPath const path = Verbatim(text);
        TString const filename(name);
        bool const hasExtension = extensionIndex >= 0;
        EXPECT_EQ((Texts{path.RootName(), path.RootPath(), path.Filename(), path.Parent()}),
                  (Texts{rootName, rootPath, name, parent}));
        EXPECT_EQ((Texts{path.RootDirectory(), path.Extension(), path.Stem()}),
                  (Texts{rootDirectory < 0 ? u"" : u"/",
                         hasExtension ? TString(text).mid(extensionIndex) : TString(),
                         filename.left(hasExtension ? extensionIndex - 1 - filenameIndex : -1)}));
        EXPECT_EQ(
            (std::array{path.RootNameLength(), path.RootDirectoryIndex(), path.FilenameIndex(),
                        path.ExtensionIndex()}),
            (std::array{TString(rootName).length(), rootDirectory, filenameIndex, extensionIndex}));
        EXPECT_EQ((std::array{path.HasRootName(), path.IsAbsolute(), path.HasRootPath(),
                              path.HasFilename(), path.HasStem(), path.HasExtension(),
                              path.IsDots(), path.HasParentPath()}),
                  (std::array{*rootName != 0, rootDirectory >= 0, *rootPath != 0,
                              filenameIndex >= 0, filenameIndex > 0, hasExtension,
                              filename == u"." || filename == u"..", *parent != 0}));
        bool const isJustRoot = filenameIndex < 0 || (filename.isEmpty() && *parent == 0);
        EXPECT_EQ(TString(TPath(path).RemoveFilename()), TString(isJustRoot ? text : parent));
        TString const bare = TString(text).left(hasExtension ? extensionIndex - 1 : -1);
        EXPECT_EQ(TString(TPath(path).RemoveExtension()), bare);
        EXPECT_EQ(TString(TPath(path).ReplaceExtension(u".o")), bare + u"..o");
        EXPECT_EQ(TString(TPath(path).ReplaceExtension(u"")), bare);
    }
}

TEST(TPathTest, NetworkNames)
{
    std::tuple<int, char16_t const*, bool, bool, int, char16_t const*, int, char16_t const*,
               char16_t> const cases[] = {
        {__LINE__, u"//", false, false, 1, u"", 1, u"", kNoLetter},
        {__LINE__, u"//s", true, true, 0, u"", 0, u"//s", kNoLetter},
        {__LINE__, u"//s/share/x/y/", true, true, 4, u"share", 9, u"/x/y/", kNoLetter},
        {__LINE__, u"//host/c$", true, true, 7, u"c$", -1, u"", u'c'},
        {__LINE__, u"//host/C$/dir", true, true, 7, u"C$", 9, u"/dir", u'C'},
        {__LINE__, u"//host/1$/dir", true, true, 7, u"1$", 9, u"/dir", kNoLetter},
        {__LINE__, u"//host/cc$", true, true, 7, u"cc$", -1, u"", kNoLetter},
        {__LINE__, u"//?/C:/x", false, true, 1, u"", 1, u"", kNoLetter},
        {__LINE__, u"//?/UNC/s/x", true, true, 4, u"UNC", 7, u"/s/x", kNoLetter},
        {__LINE__, u"//?/UNC", false, true, 1, u"", 1, u"", kNoLetter},
        {__LINE__, u"//?/unc/s/x", false, true, 1, u"", 1, u"", kNoLetter},
        {__LINE__, u"/c$/x", false, false, 1, u"", 3, u"", kNoLetter},
        {__LINE__, u"C:c$/x", false, false, 0, u"", 4, u"", kNoLetter},
        {__LINE__, u"\\\\s", false, true, 0, u"", -1, u"", kNoLetter},
        {__LINE__, u"SMB://s", false, true, 0, u"", 4, u"", kNoLetter},
        {__LINE__, u"smb:/s", false, false, 0, u"", 4, u"", kNoLetter},
    };
    for (auto const& [line, text, isUNC, isSMB, shareIndex, share, objectIndex, object,
                      driveLetter] : cases) {
        SCOPED_TRACE(line);
        TPath const path = Verbatim(text);
        EXPECT_EQ((std::array{path.UNCShareNameIndex(), path.UNCObjectNameIndex()}),
                  (std::array{shareIndex, objectIndex}));
        EXPECT_EQ((Texts{path.UNCShareName(), path.UNCObjectName()}), (Texts{share, object}));
        EXPECT_EQ(path.AdminShareDriveLetter(), driveLetter);
        EXPECT_EQ((std::array{path.IsUNC(), path.IsSMB(), path.IsExtendedLength(),
                              path.HasUNCObjectName(), path.IsAdminShare()}),
                  (std::array{isUNC, isSMB, TString(text).startsWith(u"//?/"), *object != 0,
                              driveLetter != kNoLetter}));
    }
}

TEST(TPathTest, TextLosesOneSeparatorUnlessItIsARoot)
{
    char16_t const* const cases[][2] = {
        {u"", u""},       {u"/", u"/"},       {u"//", u"/"},
        {u"///", u"///"}, {u"////", u"///"},  {u"a/", u"a"},
        {u"a//", u"a/"},  {u"C:/", u"C:/"},   {u"C://", u"C:/"},
        {u"1:/", u"1:"},  {u"//s/", u"//s/"}, {u"//s/x/", u"//s/x"},
        {u"a\\", u"a\\"}, {u"//?/", u"//?"},  {u"//?/UNC/", u"//?/UNC"},
    };
    for (auto const& [text, stored] : cases) {
        TString const lvalue(text);
        SCOPED_TRACE(lvalue);
        EXPECT_EQ(TString(TPath(text)), TString(stored));
        EXPECT_EQ(TString(TPath(TString(text))), TString(stored));
        EXPECT_EQ(TString(TPath(lvalue)), TString(stored));
        EXPECT_EQ(TString(Verbatim(text)), lvalue);
        EXPECT_EQ(TString(TPath(TPathCore(lvalue))), lvalue);
        EXPECT_EQ(TPath(TPathCore(lvalue)).toTPathCore(), TPathCore(lvalue));
        EXPECT_EQ(TString(TPath::fromWindows(TString(text).replace(u'/', u'\\'))),
                  TString(TPath(TString(text).replace(u'\\', u'/'))));
    }
    EXPECT_EQ(TFormat(u"%1|%2", TPath(u"/a"), TPath(u"a\\b").GenericString()), TString(u"/a|a/b"));
}

TEST(TPathTest, PathsAreJoined)
{
    char16_t const* const cases[][3] = {{u"a", u"b", u"a/b"},
                                        {u"a/", u"b", u"a/b"},
                                        {u"a", u"/b", u"a/b"},
                                        {u"a/", u"/b", u"a//b"},
                                        {u"", u"b", u"b"},
                                        {u"a", u"", u"a"},
                                        {u"C:", u"a/", u"C:/a/"},
                                        {u"1234567", u"123456", u"1234567/123456"},
                                        {u"1234567", u"1234567", u"1234567/1234567"}};
    for (auto const& [l, r, joined] : cases) {
        SCOPED_TRACE(TString(joined));
        TPath const left = Verbatim(l);
        TPath const right = Verbatim(r);
        for (TPath const& path : {left / right, TPath(left) / right, TPath(left) /= right}) {
            EXPECT_EQ(TString(path), TString(joined));
        }
        EXPECT_EQ(TString(left + right), TString(l) + r);
        EXPECT_EQ(TString(TPath(left) += right), TString(l) + r);
    }
    TPath path(u"a");
    EXPECT_EQ(TString(path.Append(path)), TString(u"a/a"));
    EXPECT_EQ(TString(path.Concat(path)), TString(u"a/aa/a"));
    EXPECT_EQ(TString(path + u"b/" + TString(u"c/") + u'/'), TString(u"a/aa/abc/"));

    TPath x(u"x");
    TPath y = Verbatim(u"y/");
    x.Swap(y);
    EXPECT_EQ(TString(x) + u"|" + TString(y), TString(u"y/|x"));
    x.Swap(y);
    EXPECT_EQ(TString(x) + u"|" + TString(y), TString(u"x|y"));
    y = Verbatim(u"z/");
    y.Swap(y);
    EXPECT_EQ(TString(y), TString(u"z"));
}

TEST(TPathTest, ElementsFollowOneAnother)
{
    std::tuple<int, char16_t const*, std::vector<TString>> const cases[] = {
        {__LINE__, u"", {}},
        {__LINE__, u"/", {u"/"}},
        {__LINE__, u"///", {u"//", u"/"}},
        {__LINE__, u"/a/b", {u"/", u"a", u"b"}},
        {__LINE__, u"a//b//", {u"a", u"b"}},
        {__LINE__, u"a\\b/c\\d\\e\\f\\g\\h\\i\\j\\k", {u"a/b", u"c/d/e/f/g/h/i/j/k"}},
        {__LINE__, u"C:/a", {u"C:", u"/", u"a"}},
        {__LINE__, u"C:a", {u"C:", u"a"}},
        {__LINE__, u"//server", {u"//server"}},
        {__LINE__, u"//ser\\r/share/x", {u"//ser/r", u"/", u"share", u"x"}},
        {__LINE__, u"//?/UNC/srv/sh", {u"//?", u"/", u"UNC", u"srv", u"sh"}},
        {__LINE__, u"//?/C:/x", {u"/", u"?", u"C:", u"x"}},
        {__LINE__, u"abcdefghijklmn/abcdefghijklmno", {u"abcdefghijklmn", u"abcdefghijklmno"}},
    };
    for (auto const& [line, text, elements] : cases) {
        SCOPED_TRACE(line);
        TPath const path = Verbatim(text);
        EXPECT_EQ(path.toVector(), elements); // as both ways of an iterator, says the fuzzer
        EXPECT_EQ(path.front(), elements.empty() ? TString() : elements.front());
        EXPECT_TRUE(elements.empty() || path.back() == elements.back());
    }
    EXPECT_EQ(TString(TPath::fromVector({u"/", u"a/", u"", u"b//", u"/c"})), TString(u"/a/b//c"));
    EXPECT_EQ(TString(TPath::fromVector({u"C:", u"a"})), TString(u"C:/a"));
    EXPECT_EQ(*TPath::iterator(), TString());
    EXPECT_NE(TPath::iterator(), TPath().begin());
}

TEST(TPathTest, PositionsOutsideAPathAreErrors)
{
    TPath const path(u"ab/c");
    for (int const position : {-1, 4}) {
        EXPECT_KOR_ERROR(path.ElementLengthAt(position), TPath::Exception, kElementPosition);
        EXPECT_KOR_ERROR(path.SeparatorLengthAt(position), TPath::Exception, kSeparatorPosition);
    }
    EXPECT_EQ(path.ElementLengthAt(1), 1);
    EXPECT_EQ(path.ElementLengthAt(2), 0);
    EXPECT_EQ(path.SeparatorLengthAt(1), 0);
    EXPECT_EQ(Verbatim(u"a///").SeparatorLengthAt(1), 3);
    EXPECT_EQ(TPath(u"C:/").SeparatorLengthAt(2), 0);

    EXPECT_KOR_ERROR(TPath::iterator(&path, -1), TPath::Exception, kElementPosition);
    EXPECT_KOR_ERROR(TPath::iterator(&path, 5), TPath::Exception, kIndex);
    EXPECT_KOR_ERROR(TPath::iterator(&path, 1).prev(), TPath::Exception, kOutOfSync);
    TPath::iterator i = path.end();
    EXPECT_KOR_ERROR(++i, TPath::Exception, kBeyondEnd);
    EXPECT_KOR_ERROR(path.end().next(), TPath::Exception, kBeyondEnd);
    EXPECT_EQ(*--i, TString(u"c")); // where it was before the step that failed
    EXPECT_KOR_ERROR(--path.begin(), TPath::Exception, kBeyondBeginning);
    EXPECT_KOR_ERROR(TPath().back(), TPath::Exception, kBeyondBeginning);
}

TEST(TPathTest, EqualityFoldsCaseAndOrderFoldsBackslashes)
{
    std::tuple<char16_t const*, char16_t const*, int, bool> const cases[] = {
        {u"/a/b", u"/a/b", 0, false}, {u"/A/b", u"/a/B", 0, true}, {u"a\\b", u"a/b", 1, false},
        {u"a\\c", u"a/b", 1, false},  {u"a/b", u"a/bc", -1, true}, {u"a/b", u"a\\", -1, false},
        {u"a\\", u"a/b", 1, true},    {u"aZ", u"a\\", 1, false},   {u"\u00C4", u"\u00E4", 0, true},
    };
    for (auto const& [left, right, expected, isLess] : cases) {
        TPath const a(left);
        TPath const b(right);
        SCOPED_TRACE(a + b);
        int const compared = a.Compare(b);
        EXPECT_EQ((compared > 0) - (compared < 0), expected);
        EXPECT_EQ((std::array{a == b, a != b, a < b}),
                  (std::array{compared == 0, compared != 0, isLess}));
    }
    EXPECT_EQ(TPath::caseSensitivity(), TString::CaseInsensitive);
}

TEST(TPathTest, RandomPathsAgreeWithTheirGenericForm)
{
    std::mt19937 random(311); // fixed seed: a failure can be run again
    int compared = 0;
    for (int i = 0; i < 20000; ++i) {
        TString const text = RandomText(random);
        TPath const path(text);
        TString const generic = path.GenericString();
        TString const lower = generic.toLower();
        ASSERT_EQ(std::hash<TPath>()(path),
                  THash32(lower.constData(), lower.lengthInBytes(), 0xDEADBEEF));
        // Without other roots, a path that ends in a name means the same to the standard library.
        if (!generic.contains(u':') && generic == text && !generic.startsWith(u"//") &&
            !path.HasTrailingSeparator() && !TString(path.Filename()).startsWith(u"..")) {
            std::filesystem::path const peer(text.toStdU16String());
            auto const same = [](TPath const& ours, std::filesystem::path const& theirs) {
                return ours.NativeString().toStdU16String() == theirs.u16string();
            };
            ASSERT_TRUE(same(path.Filename(), peer.filename())) << path;
            ASSERT_TRUE(same(path.Stem(), peer.stem())) << path;
            ASSERT_EQ(path.HasExtension(), peer.has_extension()) << path;
            ASSERT_TRUE(!path.HasExtension() || same(u"." + path.Extension(), peer.extension()))
                << path;
            ASSERT_EQ(path.size(), std::distance(peer.begin(), peer.end())) << path;
            ++compared;
        }
    }
    EXPECT_GT(compared, 1000);
}

} // namespace
