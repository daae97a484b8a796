/// Settings that outlive the program: of the user or of the whole machine, in named groups.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/string/TString.h"

#include <QSettings>

#include <vector>

class QColor;

/// A `QSettings` in the native format of the system, opened for the configured organisation and an
/// application, and standing in the group of one area of settings. Keys, which must not be empty,
/// are relative to it.
///
///     TSettings::Configure(u"Maker", u"Census", TString()); // once, at the start
///     TSettings::SetStringValue(TSettings::Directories, u"last", folder);
///
///     TSettings settings(TSettings::DialogSettings, u"main window");
///     settings.SetIntValue(u"width", width);
///     settings.sync(); // now it is in the file
///
/// A getter gives the default when there is no value, also not where Qt looks besides: in the
/// organisation's and the machine's settings. It converts values of other types as `QVariant` does:
/// what is no number counts as 0 then, not as the default, and a text with a comma that was written
/// into the file by hand, without quotes, is a list and no text.
/// Bytes and lists that are not there are empty. Nothing is thrown for files that cannot be read or
/// written, `status()` tells of it; a spoilt file keeps, when it is written, what could be read.
///
/// A "/" in a key or in the name of a sub-group separates levels.
///
/// What is set is in the file at the latest when the object is destroyed: for the static functions,
/// when they return. A failed write leaves it in memory, for the next one; who has to know uses an
/// object, `sync()` and `status()`. Writers lose nothing of each other, in several processes
/// neither: under a lock file, each takes over what is new in the file, but for the keys that it
/// has set or removed. (Qt sees that a file is new by its size and its time in milliseconds: a
/// write that keeps both goes unseen.) A writer waits for one that holds the lock file as long as
/// that lives.
///
/// Thread safety: one object is for one thread at a time, but several may stand for one file. The
/// static functions are safe from any thread, once `Configure` has returned.
class KORCOREPLATFORM_EXPORT TSettings : public QSettings
{
public:
    /// Whose settings. Every other number means those of the machine, too.
    enum Scope : int
    {
        UserScope = 0,
        SystemScope = 1
    };

    enum Key : int
    {
        Application = 0
    };

    /// The areas of settings. The numbers are fixed; those that are missing are not to be used.
    enum Group : int
    {
        NoGroup = 0, ///< Keys stand outside all groups.
        AutosaveFileMap = 1,
        AutoUpdate = 2,
        Autosave = 3,
        ConnectionSettings = 4,
        Cookies = 5,
        CustomSQL = 6,
        NoGroup7 = 7, ///< As `NoGroup`.
        Debug = 8,
        DialogSettings = 9,
        Directories = 10,
        DiscoverPane = 11,
        FileDialog = 12,
        Install = 13,
        JavaScriptConnectors = 14,
        JavaScriptConnectorsRecentURLs = 15,
        LastBetaBuildWarn = 16,
        LastPrivateBuildWarn = 17,
        MostRecentlyUsedColors = 20,
        Prompts = 21,
        Proxy = 22,
        PublicPublishDialog = 23,
        PublicServerAliases = 24,
        RecentConnectionList = 25,
        RecentExtensions = 26,
        RecentFileBitmaps = 27,
        RecentFileList = 28,
        RecentWorkbookList = 29,
        ReportingServer = 34, ///< In a file of its own.
        Samples = 36,
        Settings = 37,
        ShowDataDialog = 38,
        URLWhitelist = 39,
        Usernames = 40,
        WebDataWhitelistedURLsCookies = 41,
        WebDataCORSWhitelist = 42,
        WorkgroupEffectiveServers = 43,
        WorkgroupLogins = 44,
        WorkgroupSites = 45,
        XRSSWhitelist = 46,
        AlternativeFederationEngineDialog = 47
    };

    /// Sets the names under which every later object opens its file. The application's name is
    /// `app` as it is, or, with a suffix, `app` and `suffix` joined by "-", and with "-" for every
    /// blank. To be called once, before there are settings objects and other threads. Without an
    /// organisation Qt stores under a name of its own, and `status()` is an error.
    static void Configure(TString const& org, TString const& app, TString const& suffix);

    static TString OrgName();

    /// The configured name; for `ReportingServer`, that of the group itself.
    static TString AppName(Group group);

    static TString GroupName(Group group); ///< Empty for a number that is no group.
    static TString KeyName(Key key);       ///< "Application", or empty for any other number.

    /// Opens the user's settings and goes to the group, then to the sub-groups that are not empty.
    explicit TSettings(Group group, TString const& sub1 = TString(),
                       TString const& sub2 = TString());
    TSettings(Scope scope, Group group, TString const& sub1 = TString(),
              TString const& sub2 = TString());

    /// Opens the file of one group's application, and goes to another group in it.
    TSettings(Scope scope, Group appGroup, Group group, TString const& sub1, TString const& sub2);
    ~TSettings() override;

    /// Goes from the current group to the one named, and on to the sub-groups that are not empty. A
    /// group without a name leads nowhere, its sub-groups neither.
    void init(Group group, TString const& sub1, TString const& sub2);

    bool GetBoolValue(TString const& key, bool defaultValue) const;
    int GetIntValue(TString const& key, int defaultValue) const;
    unsigned GetUintValue(TString const& key, unsigned defaultValue) const;
    TString GetStringValue(TString const& key, TString const& defaultValue) const;
    std::vector<signed char> GetBinaryValue(TString const& key) const;
    QList<QString> GetStringList(TString const& key) const;
    QList<QColor> GetColorList(TString const& key) const;

    void SetBoolValue(TString const& key, bool newValue);
    void SetIntValue(TString const& key, int newValue);
    void SetUintValue(TString const& key, unsigned newValue);
    void SetStringValue(TString const& key, TString const& newValue);

    /// Both throw `std::length_error` for more bytes than a `QByteArray` holds, about 2^31. `data`
    /// may be null when `lengthInBytes` is 0.
    void SetBinaryValue(TString const& key, std::vector<signed char> const& newValue);
    void SetBinaryValue(TString const& key, void const* data, unsigned long lengthInBytes);

    void SetStringList(TString const& key, QList<QString> const& newValue);
    void SetColorList(TString const& key, QList<QColor> const& newValue); ///< Of any colour model.

    bool ValueExists(TString const& key) const; ///< Whether there is a value, not only a sub-group.

    /// Removes the value, and what is in a sub-group of that name. An empty key means the whole
    /// current group, but nothing outside all groups.
    void Remove(TString const& key);

    std::vector<TString> Values() const;      ///< The keys of the current group, in Qt's order.
    std::vector<TString> ChildGroups() const; ///< Its sub-groups, in Qt's order.

    // The same for the user's settings in one group, which are opened for the one call.

    static bool GetBoolValue(Group group, TString const& key, bool defaultValue);
    static int GetIntValue(Group group, TString const& key, int defaultValue);
    static unsigned GetUintValue(Group group, TString const& key, unsigned defaultValue);
    static TString GetStringValue(Group group, TString const& key, TString const& defaultValue);
    static std::vector<signed char> GetBinaryValue(Group group, TString const& key);
    static QList<QString> GetStringList(Group group, TString const& key);
    static QList<QColor> GetColorList(Group group, TString const& key);

    static void SetBoolValue(Group group, TString const& key, bool newValue);
    static void SetIntValue(Group group, TString const& key, int newValue);
    static void SetUintValue(Group group, TString const& key, unsigned newValue);
    static void SetStringValue(Group group, TString const& key, TString const& newValue);
    static void SetBinaryValue(Group group, TString const& key,
                               std::vector<signed char> const& newValue);
    static void SetBinaryValue(Group group, TString const& key, void const* data,
                               unsigned long lengthInBytes);
    static void SetStringList(Group group, TString const& key, QList<QString> const& newValue);
    static void SetColorList(Group group, TString const& key, QList<QColor> const& newValue);

    static bool ValueExists(Group group, TString const& key);
    static std::vector<TString> Values(Group group);
    static std::vector<TString> ChildGroups(Group group);

    /// Removes all that is in a sub-group, or in the whole group when both names are empty, and a
    /// value that has the name of what is removed. Nothing happens for a group without a name.
    static void Remove(Group group, TString const& sub1, TString const& sub2 = TString());
    static void RemoveGroup(Group group); ///< As `Remove` without sub-groups.

    // The same with the choice of whose settings.

    static TString GetStringValueFromScope(Scope scope, Group group, TString const& key,
                                           TString const& defaultValue);
    static bool ValueExistsFromScope(Scope scope, Group group, TString const& key);
    static void SetStringValueAndScope(Scope scope, Group appGroup, Group group, TString const& key,
                                       TString const& newValue);
};
