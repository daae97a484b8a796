#include "korcoreplatform/main/core/files/TDirectory.h"

#include "korcoreplatform/main/core/files/PathFunctions.h"
#include "korcoreplatform/tests/support/TemporaryFolder.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

constexpr char kNoDirectory[] = "TDirectoryException_AutoGen_0xF0366EE6";
constexpr char kNotOpened[] = "TDirectoryException_AutoGen_0x798E13C2";
constexpr char kPastEnd[] = "TDirectoryException_AutoGen_0x027437A0";
constexpr char kAtEnd[] = "TDirectoryException_AutoGen_0x7DF53CA6";

TEST(TDirectoryTest, ListsWhatTheSystemHasInItsOrder)
{
    TemporaryFolder const folder;
    std::filesystem::create_directory(folder.Native("folder"));
    std::filesystem::create_symlink("nowhere", folder.Native("link"));
    for (char const* name : {"folder/inner", ".hidden", "...", "..a", ". ", "\xEF\xBB\xBF.", "a\\b",
                             "\xC3\xA9\xF0\x9F\x98\x80", "bad \xFF\xC3",
                             "a name that is longer than any text which lies in its object"}) {
        folder.Write(name, "");
    }
    TString const native = folder.Path();
    std::pair<TPath, TString> const cases[] = {
        {native, native + u"/"},
        {TPath::MakePath(native + u"/"), native + u"/"},
        {TPath::MakePath(native + u"//"), native + u"//"},
        {native + u"/folder/..", native + u"/folder/../"},
    };
    for (auto const& [directory, prefix] : cases) {
        SCOPED_TRACE(prefix);
        std::vector<TString> expected;
        for (auto const& entry : std::filesystem::directory_iterator(folder.Native("."))) {
            expected.push_back(prefix + entry.path().filename().c_str());
        }
        std::vector<TString> texts; // copies of the units: no entry has another owner
        std::vector<TPath> paths;   // every other entry is held on to
        for (TPath const& path : TDirectory(directory)) {
            TString const text = path;
            texts.emplace_back(text.constData(), text.length());
            if (texts.size() % 2 == 0) {
                paths.push_back(path);
            }
        }
        EXPECT_EQ(texts.size(), 11u);
        EXPECT_EQ(texts, expected);
        for (std::size_t i = 0; i < paths.size(); ++i) {
            EXPECT_EQ(paths[i].NativeString(), expected[2 * i + 1]);
        }
    }
    EXPECT_FALSE(PathExists(folder / TString("bad \xFF\xC3")));
}

TEST(TDirectoryTest, AListingEndsOnceAndForAll)
{
    TemporaryFolder const folder;
    int const next = ::dup(STDIN_FILENO); // what is opened next has this descriptor
    ::close(next);
    TDirectory const directory(folder.Path());
    EXPECT_TRUE(directory.isEmpty());
    EXPECT_TRUE(directory.begin() == directory.end());
    folder.Write("a", "");
    EXPECT_FALSE(directory.isEmpty());
    TDirectory::iterator open = directory.begin();
    EXPECT_EQ(::fcntl(next, F_GETFD), FD_CLOEXEC); // what has looked before is closed
    EXPECT_FALSE(open == open);
    EXPECT_TRUE(open != directory.begin());
    std::filesystem::remove(folder.Native("a"));
    EXPECT_EQ((*open).NativeString(), (folder / u"a").NativeString()); // as it was found

    TDirectory::iterator moved = std::move(open);
    EXPECT_TRUE(moved != directory.end());
    moved = directory.begin(); // closes what it had
    EXPECT_EQ(::fcntl(next, F_GETFD), -1);
    folder.Write("b", "");
    TDirectory::iterator closed = directory.begin();
    closed.close();
    TDirectory::iterator passed = directory.begin();
    ++passed;
    TDirectory::iterator end = directory.end();
    for (TDirectory::iterator* iterator : {&open, &moved, &closed, &passed, &end}) {
        EXPECT_TRUE(*iterator == directory.end());
        EXPECT_KOR_ERROR(**iterator, TDirectory::Exception, kAtEnd);
        EXPECT_KOR_ERROR(++*iterator, TDirectory::Exception, kPastEnd);
    }
}

TEST(TDirectoryTest, WhatCannotBeListedIsNamed)
{
    TemporaryFolder const folder;
    folder.Write("file", "");
    std::filesystem::create_symlink("loop", folder.Native("loop"));
    for (TPath const& path : {folder / u"file", folder / u"missing", folder / u"loop", TPath()}) {
        EXPECT_KOR_ERROR_TEXT(TDirectory(path).begin(), TDirectory::Exception, kNoDirectory,
                              u"Directory does not exist: " + path.NativeString());
        EXPECT_KOR_ERROR(TDirectory(path).isEmpty(), TDirectory::Exception, kNoDirectory);
    }
    rlimit limit;
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &limit), 0);
    rlimit const none = {0, limit.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
    EXPECT_KOR_ERROR_TEXT(TDirectory(folder.Path()).begin(), TDirectory::Exception, kNotOpened,
                          u"Unable to open directory: " + folder.Path().NativeString());
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
}

} // namespace
