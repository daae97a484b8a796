#include "korcoreplatform/main/core/system/TSystem.h"

#include "korcoreplatform/tests/support/KorTest.h"

namespace {

constexpr char kNotAllowed[] =
    "Setting environment variable 'B' not allowed in this code path. For product code, initialize "
    "at startup and for tests add to exceptions.";

constexpr char kPlace[] = "core/TSystem";

TEST(TSystemProcessTest, AfterTheStartUpOnlyExceptedVariablesChange)
{
    auto const endWithoutExceptions = [] {
        TSystem::DoneInitializingEnvironmentVariables();
        EXPECT_KOR_ASSERT(TSystem::SetEnvironmentBool(u"B", true), "0x7993B488", kPlace, 176,
                          kNotAllowed);
        std::_Exit(testing::Test::HasFailure() ? 1 : 0);
    };
    EXPECT_EXIT(endWithoutExceptions(), testing::ExitedWithCode(0), "");

    TString const most(u'\u00e9', 127); // 254 bytes
    TString const tooLong = most + u"x";
    TSystem::SetEnvironmentString(u"A", tooLong);
    EXPECT_EQ(std::getenv("A"), tooLong.toStdString());
    TSystem::UnsetEnvironment(u"A");
    EXPECT_EQ(std::getenv("A"), nullptr);
    TSystem::SetEnvironmentString(u"B", u"kept");
    TSystem::DoneInitializingEnvironmentVariablesExcept({u"A"});
    TSystem::SetEnvironmentString(u"A", most);
    EXPECT_KOR_ASSERT(TSystem::SetEnvironmentString(u"A", tooLong), "0xCC3C06F5", kPlace, 186,
                      "Cannot set environment variable 'A' to '" + tooLong.toStdString() +
                          "' because the value is too long.  Pick a shorter value or increase the "
                          "placeholder length.");
    EXPECT_EQ(std::getenv("A"), most.toStdString());
    TSystem::UnsetEnvironment(u"A");
    EXPECT_EQ(std::getenv("A"), nullptr);
    EXPECT_KOR_ASSERT(TSystem::SetEnvironmentString(u"B", tooLong), "0x7993B488", kPlace, 176,
                      kNotAllowed);
    EXPECT_KOR_ASSERT(TSystem::UnsetEnvironment(u"B"), "0xFF647F10", kPlace, 198,
                      "*GetEnvironmentVariableInitializationAllowedFlag()");
    EXPECT_STREQ(std::getenv("B"), "kept");
    TSystem::DoneInitializingEnvironmentVariablesExcept({u"B"});
    TSystem::SetEnvironmentBool(u"A", false);
    TSystem::SetEnvironmentBool(u"B", true);
    EXPECT_EQ(std::string(std::getenv("A")) + std::getenv("B"), "falsetrue");
}

} // namespace
