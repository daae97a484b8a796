#include "korcoreplatform/main/core/system/TSystem.h"

#include "korcoreplatform/main/core/files/TPath.h"
#include "korcoreplatform/main/core/system/TProcess.h"
#include "korcoreplatform/main/core/system/TSystem_p.h"
#include "korcoreplatform/tests/support/KorTest.h"

namespace {

TString TextOf(char const* script)
{
    TString text;
    int exitCode = -1;
    TProcess::RunWithOutput(TPath(u"/bin/sh"), {u"-c", script}, text, exitCode, -1);
    return text.trimmed();
}

TEST(TSystemTest, TheMachineIsWhatOtherToolsSay)
{
    EXPECT_EQ(TSystem::ComputerFullName(), TextOf("uname -n"));
    TSystem::ProcessorInfo const info = TSystem::Processor();
    EXPECT_EQ(info.logicalProcessors, TextOf("getconf _NPROCESSORS_CONF").toInt());
    EXPECT_EQ(info.name, TextOf("sed -n '/^model name/{s/[^:]*: *//p;q;}' /proc/cpuinfo"));
    if (!info.name.isEmpty()) {
        EXPECT_TRUE(info.frequencyMHz > 100 && info.frequencyMHz < 100000) << info.frequencyMHz;
    }
    EXPECT_EQ(TSystem::MacAddresses(),
              TextOf("cat /sys/class/net/*/address | grep '^.................$' | "
                     "tr a-f A-F | LC_ALL=C sort | paste -s -d ,"));
    EXPECT_EQ(TSystem::OSShortName() + TSystem::OSArchitectureType(), TString(u"macposix"));
    EXPECT_EQ(&TSystem::OSVersion(), &TSystem::OSVersionInfo::Instance());
    EXPECT_TRUE(TSystem::OSVersion().name.startsWith(u"Mac OS X"));
}

TEST(TSystemTest, AnswersAreWorkedOutFromWhatTheSystemTells)
{
    char16_t const* const hosts[][3] = {{u"alpha.beta.gamma", u"alpha", u"beta.gamma"},
                                        {u"alpha", u"alpha", u""},
                                        {u"alpha.", u"alpha", u""},
                                        {u".beta", u".beta", u"beta"},
                                        {u"", u"", u""}};
    for (auto const& host : hosts) {
        EXPECT_EQ(SystemAnswers::ComputerName(host[0]), TString(host[1]));
        EXPECT_EQ(SystemAnswers::DNSDomainName(host[0]), TString(host[2]));
    }
    TString const low = u"00:00:00:00:00:0A";
    TString const high = u"02:00:00:00:00:00";
    EXPECT_EQ(SystemAnswers::MacAddresses({high, u"", low, low + u":01", high}),
              low + u"," + high + u"," + high);
    EXPECT_EQ(SystemAnswers::MacAddresses({}), TString());

    EXPECT_EQ(SystemAnswers::FrequencyMHz(1'999'999, 24'000'000, 100), 1);
    EXPECT_EQ(SystemAnswers::FrequencyMHz(999'999, 9'999'999'999, 100), 999'999);
    EXPECT_EQ(SystemAnswers::FrequencyMHz(0, 0, 100), 0);
}

TEST(TSystemTest, TheVersionIsReadFromAPropertyList)
{
    // The list, where "KEY" stands for the key, and the name and parts that are found.
    std::tuple<char const*, bool, char const*> const cases[] = {
        {"KEY<string>13.4</string>", false, "Mac OS X 13.4|13|4|0"},
        {"KEY\n<string> 10.15.7\n</string>", true, "Mac OS X Server 10.15.7|10|15|7"},
        {"<string>9.9</string>KEY<string>1.2</string><string>3.4</string>", false,
         "Mac OS X 1.2|1|2|0"},
        {"KEY<string>10.x.7.1</string>", false, "Mac OS X 10.x.7.1|10|0|0"},
        {"KEY<string>13</string>", false, "-|9|9|9"},
        {"KEY<string>v13.4</string>", false, "-|9|9|9"},
        {"KEY<string>13.4\nbeta</string>", false, "-|9|9|9"},
        {"KEY<string>13.4", false, "-|9|9|9"},
        {"<string>13.4</string>KEY</string>", false, "-|9|9|9"},
        {"<key>productuservisibleversion</key><string>13.4</string>", false, "-|9|9|9"},
    };
    for (auto const& [text, isServer, found] : cases) {
        TSystem::OSVersionInfo info;
        info.name = u"-";
        info.majorVersion = info.minorVersion = info.patchVersion = 9;
        TString list(text);
        list.replace(u"KEY", u"<key>ProductUserVisibleVersion</key>");
        SystemAnswers::ReadVersion(list, isServer, info);
        EXPECT_EQ(info.name + u"|" + TString::number(info.majorVersion) + u"|" +
                      TString::number(info.minorVersion) + u"|" +
                      TString::number(info.patchVersion),
                  TString(found))
            << text;
    }
}

TEST(TSystemTest, VariablesAreReadByEitherFormOfTheName)
{
    constexpr char kName[] = "KOR_TEST_VARIABLE_\xc3\xa9";
    // No value: there is no variable.
    std::tuple<char const*, char16_t const*, bool, bool> const cases[] = {
        {nullptr, u"default", false, true}, {"", u"", false, false},
        {"TrUE", u"TrUE", true, true},      {"1", u"1", false, false},
        {"true ", u"true ", false, false},  {"\xc3\xa9\xff", u"\u00e9\ufffd", false, false},
    };
    for (auto const& [value, text, flag, flagByDefault] : cases) {
        value != nullptr ? ::setenv(kName, value, 1) : ::unsetenv(kName);
        EXPECT_EQ(TSystem::EnvironmentContains(TString(kName)), value != nullptr);
        EXPECT_EQ(TSystem::EnvironmentString(TString(kName), u"default"), TString(text));
        EXPECT_EQ(TSystem::EnvironmentString(kName, u"default"), TString(text));
        EXPECT_EQ(TSystem::EnvironmentBool(TString(kName), false), flag) << value;
        EXPECT_EQ(TSystem::EnvironmentBool(kName, true), flagByDefault) << value;
    }
    ::unsetenv(kName);
}

} // namespace
