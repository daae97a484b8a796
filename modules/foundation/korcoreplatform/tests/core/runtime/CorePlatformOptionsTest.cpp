#include "korcoreplatform/main/core/runtime/CorePlatformOptions.h"

#include "korcoreplatform/main/core/runtime/OptAllowAltPathsFlag_p.h"
#include "korcoreplatform/main/core/runtime/OptLogSeverity.h"
#include "korcoreplatform/main/core/runtime/OptMetrics.h"
#include "korcoreplatform/tests/support/KorTest.h"
#include "korcoreplatform/tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

TEST(CorePlatformOptionsTest, ApplicationDirEndsWithASeparator)
{
    CorePlatformOptions::SetApplicationDir(u"/opt/census");
    EXPECT_EQ(CorePlatformOptions::GetApplicationDir(), u"/opt/census/");
    for (char16_t const* asItIs : {u"/opt/census/", u"C:\\census\\", u""}) {
        CorePlatformOptions::SetApplicationDir(asItIs);
        EXPECT_EQ(CorePlatformOptions::GetApplicationDir(), asItIs);
    }
}

// What is set here is what the library itself asks; an empty callable stays empty.
TEST(CorePlatformOptionsTest, CallablesAreKeptAsTheyAre)
{
    struct Option
    {
        int line;
        std::function<bool()> (*get)();
        void (*set)(std::function<bool()>);
        bool (*ask)();
    };
    Option const options[] = {
        {__LINE__, &CorePlatformOptions::GetIsSeverityPerLogDetailOn,
         &CorePlatformOptions::SetIsSeverityPerLogDetailOn,
         &OptLogSeverity::IsSeverityPerLogDetailOn},
        {__LINE__, &CorePlatformOptions::GetIsActivityAndResourceTracingEnabledFunction,
         &CorePlatformOptions::SetIsActivityAndResourceTracingEnabledFunction,
         &OptMetrics::IsActivityAndResourceTracingEnabled},
    };
    for (Option const& option : options) {
        SCOPED_TRACE(option.line);
        std::function<bool()> const original = option.get();
        EXPECT_FALSE(original() || option.ask());
        bool answer = true;
        option.set([&] { return answer; });
        EXPECT_TRUE(option.ask() && option.get()());
        answer = false;
        EXPECT_FALSE(option.ask());
        option.set({});
        EXPECT_FALSE(option.get());
        EXPECT_THROW(option.ask(), std::bad_function_call);
        option.set(original);
        EXPECT_FALSE(option.ask());
    }
}

TEST(CorePlatformOptionsTest, PlaceOfTheLibraryIsKnownByItsEnd)
{
    EXPECT_TRUE(AltPaths::IsAppBundleDirectory(u"/Applications/Census.app/Contents/Frameworks"));
    EXPECT_FALSE(AltPaths::IsAppBundleDirectory(u"/Census.APP/Contents/Frameworks"));

    TemporaryFolder const folder;
    std::filesystem::create_directory(folder.Native("tree"));
    std::filesystem::create_symlink("nowhere", folder.Native("dangling"));
    struct Case
    {
        int line;
        char16_t const* below;
        bool isRepository;
    };
    Case const cases[] = {
        {__LINE__, u"/tree/build", true},
        {__LINE__, u"/tree/BUILD", true},
        {__LINE__, u"/tree/install/server/x64", true},
        {__LINE__, u"/tree/Install/Server/X86", true},
        {__LINE__, u"/treeqbuild", true}, // what stands before the tail is not looked at
        {__LINE__, u"/tree/build/lib", false},
        {__LINE__, u"/missing/build", false},
        {__LINE__, u"/dangling/build", false},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.line);
        EXPECT_EQ(AltPaths::IsRepositoryDirectory(TString(folder.Path()) + c.below),
                  c.isRepository);
    }
    EXPECT_FALSE(AltPaths::IsRepositoryDirectory(u"build")); // no root to look at
}

TEST(CorePlatformOptionsTest, ValidCharactersHaveTheirEdges)
{
    for (int c = 0; c <= 0xFFFF; ++c) {
        bool const isValid = c == 9 || c == 10 || c == 13 || (c > 31 && c < 0xFFFE);
        auto const unit = static_cast<char16_t>(c);
        ASSERT_EQ(CorePlatformUtils::IsValidCharacter(unit), isValid) << c;
        ASSERT_EQ(CorePlatformUtils::IsValidCharacter(&unit), isValid) << c;
    }
    EXPECT_FALSE(CorePlatformUtils::IsValidCharacter(nullptr));
}

} // namespace
