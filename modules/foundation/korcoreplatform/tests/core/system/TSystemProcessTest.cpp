#include "korcoreplatform/main/core/system/TSystem.h"

#include "korcoreplatform/tests/support/KorTest.h"
#include "korsys/main/error/LogicException.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <string>

namespace {

constexpr char kNotAllowed[] =
    "Setting environment variable 'B' not allowed in this code path. For product code, initialize "
    "at startup and for tests add to exceptions.";

/// Expects the assertion at a line of the place that all of them report.
void ExpectAssert(int line, std::string const& number, std::string const& text,
                  std::function<void()> const& run)
{
    std::string const id = "LogicException_LogicAssert_" + number;
    EXPECT_KOR_ERROR(run(), LogicException, id);
    std::string const message = "Internal error in file \"modules/foundation/korcoreplatform/main/"
                                "core/TSystem\" at line " +
                                std::to_string(line) + ": " + text;
    try {
        run();
    } catch (LogicException const& e) {
        EXPECT_EQ(e.what(), message);
    }
}

TEST(TSystemProcessTest, AfterTheStartUpOnlyExceptedVariablesChange)
{
    auto const endWithoutExceptions = [] {
        TSystem::DoneInitializingEnvironmentVariables();
        ExpectAssert(176, "0x7993B488", kNotAllowed,
                     [] { TSystem::SetEnvironmentBool(u"B", true); });
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
    ExpectAssert(186, "0xCC3C06F5",
                 "Cannot set environment variable 'A' to '" + tooLong.toStdString() +
                     "' because the value is too long.  Pick a shorter value or increase the "
                     "placeholder length.",
                 [&] { TSystem::SetEnvironmentString(u"A", tooLong); });
    EXPECT_EQ(std::getenv("A"), most.toStdString());
    TSystem::UnsetEnvironment(u"A");
    EXPECT_EQ(std::getenv("A"), nullptr);
    ExpectAssert(176, "0x7993B488", kNotAllowed,
                 [&] { TSystem::SetEnvironmentString(u"B", tooLong); });
    ExpectAssert(198, "0xFF647F10", "*GetEnvironmentVariableInitializationAllowedFlag()",
                 [] { TSystem::UnsetEnvironment(u"B"); });
    EXPECT_STREQ(std::getenv("B"), "kept");
    TSystem::DoneInitializingEnvironmentVariablesExcept({u"B"});
    TSystem::SetEnvironmentBool(u"A", false);
    TSystem::SetEnvironmentBool(u"B", true);
    EXPECT_EQ(std::string(std::getenv("A")) + std::getenv("B"), "falsetrue");
}

} // namespace
