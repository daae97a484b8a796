#include "korcoreplatform/main/core/runtime/CorePlatformOptions.h"

#include "korcoreplatform/main/core/runtime/OptAllowAltPathsFlag_p.h"
#include "korcoreplatform/main/core/runtime/OptLogSeverity.h"
#include "korcoreplatform/main/core/runtime/OptMetrics.h"
#include "korcoreplatform/tests/support/TemporaryFolder.h"

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
    using Callable = std::function<bool()>;
    std::tuple<Callable (*)(), void (*)(Callable), bool (*)()> const options[] = {
        {&CorePlatformOptions::GetIsSeverityPerLogDetailOn,
         &CorePlatformOptions::SetIsSeverityPerLogDetailOn,
         &OptLogSeverity::IsSeverityPerLogDetailOn},
        {&CorePlatformOptions::GetIsActivityAndResourceTracingEnabledFunction,
         &CorePlatformOptions::SetIsActivityAndResourceTracingEnabledFunction,
         &OptMetrics::IsActivityAndResourceTracingEnabled},
    };
    for (auto const& [get, set, ask] : options) {
        SCOPED_TRACE(get == std::get<0>(options[0]));
        Callable const original = get();
        EXPECT_FALSE(original() || ask());
        bool answer = true;
        set([&] { return answer; });
        EXPECT_TRUE(ask() && get()());
        answer = false;
        EXPECT_FALSE(ask());
        set({});
        EXPECT_FALSE(get());
        EXPECT_THROW(ask(), std::bad_function_call);
        set(original);
        EXPECT_FALSE(ask());
    }
}

TEST(CorePlatformOptionsTest, PlaceOfTheLibraryIsKnownByItsEnd)
{
    EXPECT_TRUE(AltPaths::IsAppBundleDirectory(u"/Applications/Census.app/Contents/Frameworks"));
    EXPECT_FALSE(AltPaths::IsAppBundleDirectory(u"/Census.APP/Contents/Frameworks"));

    TemporaryFolder const folder;
    std::filesystem::create_directory(folder.Native("tree"));
    std::filesystem::create_symlink("nowhere", folder.Native("dangling"));
    auto const isRepository = [&](char16_t const* below) {
        return AltPaths::IsRepositoryDirectory(TString(folder.Path()) + below);
    };
    // What stands before the tail is not looked at.
    for (char16_t const* below : {u"/tree/build", u"/tree/BUILD", u"/tree/install/server/x64",
                                  u"/tree/Install/Server/X86", u"/treeqbuild"}) {
        EXPECT_TRUE(isRepository(below)) << TString(below);
    }
    for (char16_t const* below : {u"/tree/build/lib", u"/missing/build", u"/dangling/build"}) {
        EXPECT_FALSE(isRepository(below)) << TString(below);
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
        ASSERT_EQ(CorePlatformUtils::IsValidCharacter(c), isValid) << c;
    }
    EXPECT_FALSE(CorePlatformUtils::IsValidCharacter(nullptr));
    // No units, whatever their lower halves are; a char is Latin-1.
    EXPECT_FALSE(CorePlatformUtils::IsValidCharacter(0x10041));
    EXPECT_FALSE(CorePlatformUtils::IsValidCharacter(short(-5)));
    EXPECT_TRUE(CorePlatformUtils::IsValidCharacter('\xFF'));
}

} // namespace
