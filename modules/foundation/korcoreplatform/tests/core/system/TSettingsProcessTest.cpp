#include "korcoreplatform/main/core/system/TSettings.h"

#include "korcoreplatform/tests/support/ChildProcess.h"
#include "korcoreplatform/tests/support/TemporaryFolder.h"

#include <QColor>

#include <iostream>
#include <limits>

#include <sys/resource.h>

namespace {

using Bytes = std::vector<signed char>;
using Texts = std::vector<TString>;

constexpr char kFile[] = "user/Test Org/Test-App-2.conf";
constexpr int kWrites = 50;

/// What a host does once. Every process of this program does it.
void ConfigureIn(std::string const& folder)
{
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope,
                       QString::fromStdString(folder + "/user"));
    QSettings::setPath(QSettings::NativeFormat, QSettings::SystemScope,
                       QString::fromStdString(folder + "/system"));
    TSettings::Configure(u"Test Org", u"Test App", u"2");
}

/// Each test has a folder of its own.
class TSettingsTest : public testing::Test
{
protected:
    TSettingsTest() { ConfigureIn(Folder()); }

    std::string Folder() const { return m_folder.Native("").string(); }

    TemporaryFolder m_folder;
};

// Values that a file could spoil.

TString const kText(u"@a, \"b\"; c=\\d\n\0 \u00E4\xD83D\xDE00 ", 20);
Bytes const kBytes = {0, -1, 127, -128, ',', 0};
QList<QString> const kTextLists[] = {{}, {""}, {"one"}, {"a,b", "", "@c", "\"d\""}};
QList<QColor> const kColorLists[] = {
    {},
    {QColor(1, 2, 3, 4)},
    {QColor::fromHsv(359, 1, 2), QColor::fromCmykF(0.1, 0.2, 0.3, 0.4), QColor::fromHsl(10, 20, 30),
     QColor(), QColor::fromRgbF(0.5f, 0.25f, 0.125f)}};
unsigned const kMaxUint = std::numeric_limits<unsigned>::max();
int const kMinInt = std::numeric_limits<int>::min();

/// By the static functions, which need no sync, and by objects, which do.
int WriteAll(std::string const& folder)
{
    using S = TSettings;
    ConfigureIn(folder);
    S::SetBoolValue(S::Debug, u"bool", true);
    S::SetIntValue(S::Debug, u"int", kMinInt);
    S::SetUintValue(S::Debug, u"uint", kMaxUint);
    S::SetStringValue(S::Debug, u"text", kText);
    S::SetBinaryValue(S::Debug, u"bytes", kBytes);
    S::SetBinaryValue(S::Debug, u"no bytes", nullptr, 0);
    for (int i = 0; i < 4; ++i) {
        S::SetStringList(S::Debug, u"texts" + TString::number(i), kTextLists[i]);
        S::SetColorList(S::Debug, u"colors" + TString::number(i), kColorLists[i % 3]);
    }
    S outside(S::NoGroup, u"ignored");
    outside.SetIntValue(u"first", 1); // two keys that the store keeps as they are given
    outside.SetIntValue(u"second", 2);
    outside.sync();
    std::cout << "written" << std::endl;
    std::cin.get();
    return 0;
}

TEST_F(TSettingsTest, EveryKindOfValueSurvivesAKilledProcess)
{
    ChildProcess child("write all", Folder());
    ASSERT_EQ(child.ReadLine(), "written");
    child.Kill();
    using S = TSettings;
    EXPECT_TRUE(S::GetBoolValue(S::Debug, u"bool", false));
    EXPECT_EQ(S::GetIntValue(S::Debug, u"int", 1), kMinInt);
    EXPECT_EQ(S::GetUintValue(S::Debug, u"uint", 1), kMaxUint);
    EXPECT_EQ(S::GetStringValue(S::Debug, u"text", TString()), kText);
    EXPECT_EQ(S::GetBinaryValue(S::Debug, u"bytes"), kBytes);
    EXPECT_TRUE(S::ValueExists(S::Debug, u"no bytes"));
    EXPECT_EQ(S::GetBinaryValue(S::Debug, u"no bytes"), Bytes());
    for (int i = 0; i < 4; ++i) {
        TString const number = TString::number(i);
        EXPECT_EQ(S::GetStringList(S::Debug, u"texts" + number), kTextLists[i]) << i;
        EXPECT_EQ(S::GetColorList(S::Debug, u"colors" + number), kColorLists[i % 3]) << i;
    }
    EXPECT_EQ(S::GetIntValue(S::NoGroup7, u"first", 0), 1);
    EXPECT_EQ(S::GetIntValue(S::NoGroup, u"second", 0), 2);
    EXPECT_THROW(S::SetBinaryValue(S::Debug, u"k", kBytes.data(), 1ul << 31), std::length_error);
}

template <int Writer>
int WriteMany(std::string const& folder)
{
    ConfigureIn(folder);
    std::cin.get(); // the end of the input: both begin
    for (int i = 0; i < kWrites; ++i) {
        TSettings::SetIntValue(TSettings::Proxy, TString::number(i * 2 + Writer), i);
    }
    return 0;
}

TEST_F(TSettingsTest, TwoWritingProcessesLoseNothing)
{
    ChildProcess first("write many 0", Folder());
    ChildProcess second("write many 1", Folder());
    first.LetGo();
    second.LetGo();
    EXPECT_EQ(first.End(), 0);
    EXPECT_EQ(second.End(), 0);
    EXPECT_EQ(TSettings::Values(TSettings::Proxy).size(), 2u * kWrites);
}

int WriteToFullDisk(std::string const& folder)
{
    ConfigureIn(folder);
    rlimit const none = {0, 0};
    ::signal(SIGXFSZ, SIG_IGN);
    ::setrlimit(RLIMIT_FSIZE, &none);
    TSettings settings(TSettings::Proxy);
    settings.SetStringValue(u"host", u"another");
    settings.sync();
    return settings.status();
}

TEST_F(TSettingsTest, WhatCannotBeWrittenLeavesTheFileAsItWas)
{
    std::string const before = "[Proxy]\nhost=one\n";
    m_folder.Write(kFile, before);
    EXPECT_EQ(ChildProcess("full disk", Folder()).End(), QSettings::AccessError);
    EXPECT_EQ(m_folder.Read(kFile), before);
    std::filesystem::remove(m_folder.Native(kFile));
    std::filesystem::create_directories(m_folder.Native(kFile)); // nothing can be read either
    TSettings::SetIntValue(TSettings::Proxy, u"port", 8080);
    EXPECT_EQ(TSettings(TSettings::Prompts).GetIntValue(u"port", 7), 7);
}

TEST_F(TSettingsTest, WhatIsGoodInASpoiltFileIsReadAndConverted)
{
    m_folder.Write(
        kFile, "no group\n\xFF\xFE\n[Proxy\nx=\n[Proxy]\nport=8080\nhost=@Variant(\\0)\nyes=true\n"
               "word=abc\nempty=\ninvalid=@Invalid()\nno value\n");
    TSettings settings(TSettings::Proxy);
    EXPECT_EQ(settings.status(), QSettings::FormatError);
    EXPECT_EQ(settings.GetIntValue(u"/port/", 7), 8080); // Qt leaves out the slashes
    EXPECT_EQ(settings.GetIntValue(u"host", 7), 0);      // it is there, and is no number
    EXPECT_EQ(settings.GetUintValue(u"word", 5), 0u);
    EXPECT_TRUE(settings.GetBoolValue(u"yes", false));
    EXPECT_EQ(settings.GetStringValue(u"port", u"default"), u"8080");
    EXPECT_EQ(settings.GetStringValue(u"empty", u"default"), u"");
    EXPECT_EQ(settings.GetStringValue(u"invalid", u"default"), u"");
    EXPECT_TRUE(settings.GetColorList(u"port").isEmpty());
    EXPECT_TRUE(settings.GetBoolValue(u"missing", true));
    EXPECT_EQ(settings.GetStringValue(u"missing", u"default"), u"default");
    settings.SetIntValue(u"port", 8081);
    settings.sync();
    EXPECT_NE(m_folder.Read(kFile).find("port=8081"), std::string::npos);
}

TEST_F(TSettingsTest, ObjectsStandInTheirFileAndGroup)
{
    using S = TSettings;
    struct Case
    {
        int line;
        S const& settings;
        char const *file, *group;
    };
    Case const cases[] = {
        {__LINE__, S(S::Debug), kFile, "Debug"},
        {__LINE__, S(S::JavaScriptConnectorsRecentURLs, u"1"), kFile,
         "JavaScript Connectors Recent URLs/1"},
        {__LINE__, S(S::PublicServerAliases, u"1", u"2"), kFile, "Public Server Aliases/1/2"},
        {__LINE__, S(S::RecentWorkbookList, u"", u"2"), kFile, "Recent Workbook List/2"},
        {__LINE__, S(S::NoGroup7, u"1", u"2"), kFile, ""},
        {__LINE__, S(S::Group(18), u"1"), kFile, ""},
        {__LINE__, S(S::ReportingServer), "user/Test Org/ReportingServer.conf", "ReportingServer"},
        {__LINE__, S(S::Scope(9), S::Install), "system/Test Org/Test-App-2.conf", "Install"},
        {__LINE__,
         S(S::SystemScope, S::ReportingServer, S::AlternativeFederationEngineDialog, u"1", {}),
         "system/Test Org/ReportingServer.conf", "AlternativeFederationEngineDialog/1"},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.line);
        EXPECT_EQ(c.settings.fileName().toStdString(), m_folder.Native(c.file).string());
        EXPECT_EQ(c.settings.group().toStdString(), c.group);
    }
}

TEST_F(TSettingsTest, NamesFollowTheConfigurationAndTheNumber)
{
    TSettings::Configure(u"Org A", u"App A", TString());
    EXPECT_EQ(TSettings::OrgName(), u"Org A");
    EXPECT_EQ(TSettings::AppName(TSettings::Debug), u"App A"); // blanks stay without a suffix
    EXPECT_EQ(TSettings::AppName(TSettings::ReportingServer), u"ReportingServer");
    TSettings::Configure(u"Org A", u"a b", u"c d");
    EXPECT_EQ(TSettings::AppName(TSettings::Debug), u"a-b-c-d");
    EXPECT_EQ(TSettings::KeyName(TSettings::Application), u"Application");
    EXPECT_EQ(TSettings::KeyName(TSettings::Key(1)), u"");
    for (int const reserved : {-1, 0, 7, 18, 19, 30, 31, 32, 33, 35, 48, 1 << 30}) {
        EXPECT_EQ(TSettings::GroupName(TSettings::Group(reserved)), u"") << reserved;
    }
}

TEST_F(TSettingsTest, RemovingStaysInTheGroup)
{
    using S = TSettings;
    for (auto const group : {S::Debug, S::Proxy, S::NoGroup}) {
        for (TString const& key : Texts{u"a", u"b", u"s1/c", u"s1/s2/d", u"s3/e"}) {
            S::SetStringValue(group, key, key);
        }
    }
    EXPECT_EQ(S::Values(S::Debug), (Texts{u"a", u"b"}));
    EXPECT_EQ(S::ChildGroups(S::Debug), (Texts{u"s1", u"s3"}));
    EXPECT_TRUE(S::ValueExists(S::Debug, u"s1/c"));
    EXPECT_FALSE(S::ValueExists(S::Debug, u"s1"));
    S::Remove(S::Debug, u"s1", u"s2");
    EXPECT_EQ(S(S::Debug, u"s1").Values(), Texts{u"c"});
    EXPECT_EQ(S(S::Debug, u"s1").ChildGroups(), Texts());
    S::Remove(S::Debug, u"s1");
    EXPECT_EQ(S::ChildGroups(S::Debug), Texts{u"s3"});
    S(S::Debug).Remove(u"a");
    EXPECT_EQ(S::Values(S::Debug), Texts{u"b"});
    S::RemoveGroup(S::Debug);
    EXPECT_TRUE(S::Values(S::Debug).empty() && S::ChildGroups(S::Debug).empty());

    S::RemoveGroup(S::NoGroup);
    S::Remove(S::NoGroup7, u"s1", u"s2");
    S(S::NoGroup).Remove(TString());
    S(S::NoGroup).Remove(u"/"); // Qt takes it for nothing, which is everything
    S::Remove(S::Proxy, u"//");
    EXPECT_EQ(S::ChildGroups(S::NoGroup), (Texts{u"Proxy", u"s1", u"s3"}));
    EXPECT_EQ(S(S::Proxy).Values(), (Texts{u"a", u"b"}));
}

TEST_F(TSettingsTest, ScopesHaveFilesOfTheirOwn)
{
    using S = TSettings;
    S::SetStringValue(S::Prompts, u"mine", u"1");
    S::SetStringValueAndScope(S::SystemScope, S::ReportingServer, S::Proxy, u"name", kText);
    EXPECT_EQ(S(S::SystemScope, S::ReportingServer, S::Proxy, TString(), TString())
                  .GetStringValue(u"name", u""),
              kText);
    EXPECT_FALSE(S::ValueExistsFromScope(S::SystemScope, S::Prompts, u"mine"));
    EXPECT_EQ(S::GetStringValueFromScope(S::UserScope, S::Prompts, u"mine", u""), u"1");
}

} // namespace

int main(int argc, char** argv)
{
    return RunTestsOrChild({{"write all", &WriteAll},
                            {"write many 0", &WriteMany<0>},
                            {"write many 1", &WriteMany<1>},
                            {"full disk", &WriteToFullDisk}},
                           argc, argv);
}
