#include "korcoreplatform/main/core/system/TSettings.h"

#include <QByteArray>
#include <QColor>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <cstddef>
#include <limits>
#include <stdexcept>

namespace {

/// By number; null for those that have no name.
constexpr char16_t const* kGroupNames[] = {
    nullptr,
    u"Autosave File Map",
    u"AutoUpdate",
    u"Autosave",
    u"ConnectionSettings",
    u"Cookies",
    u"CustomSQL",
    nullptr,
    u"Debug",
    u"DialogSettings",
    u"Directories",
    u"DiscoverPane",
    u"FileDialog",
    u"Install",
    u"JavaScript Connectors",
    u"JavaScript Connectors Recent URLs",
    u"LastBetaBuildWarn",
    u"LastPrivateBuildWarn",
    nullptr,
    nullptr,
    u"MostRecentlyUsedColors",
    u"Prompts",
    u"Proxy",
    u"PublicPublishDialog",
    u"Public Server Aliases",
    u"Recent Connection List",
    u"Recent Extensions",
    u"Recent File Bitmaps",
    u"Recent File List",
    u"Recent Workbook List",
    nullptr,
    nullptr,
    nullptr,
    nullptr,
    u"ReportingServer",
    nullptr,
    u"Samples",
    u"Settings",
    u"ShowDataDialog",
    u"URLWhitelist",
    u"Usernames",
    u"WebDataWhitelistedURLsCookies",
    u"WebDataCORSWhitelist",
    u"WorkgroupEffectiveServers",
    u"WorkgroupLogins",
    u"WorkgroupSites",
    u"XRSSWhitelist",
    u"AlternativeFederationEngineDialog",
};
static_assert(std::size(kGroupNames) == TSettings::AlternativeFederationEngineDialog + 1);

/// No longer than Qt 5 allows with the header of the array.
constexpr unsigned long kMaxBinaryBytes = std::numeric_limits<int>::max() - 64;

struct Names
{
    TString organisation;
    TString application;
};

Names& ConfiguredNames()
{
    static Names& s_names = *new Names; // exit handlers may store settings
    return s_names;
}

QSettings::Scope QtScope(TSettings::Scope scope)
{
    return scope == TSettings::UserScope ? QSettings::UserScope : QSettings::SystemScope;
}

/// A key in the form that Qt wants, for calls that only look. It borrows the units of the text, so
/// nobody may keep it: what sets or removes a value keeps its key when that stands in no group.
class BorrowedKey
{
public:
    explicit BorrowedKey(TString const& key)
        : m_header{{Q_REFCOUNT_INITIALIZE_STATIC, key.length(), 0, 0, Offset(key)}},
          m_text(QStringDataPtr{&m_header})
    {}
    BorrowedKey(BorrowedKey const&) = delete;
    BorrowedKey& operator=(BorrowedKey const&) = delete;

    operator QString const&() const { return m_text; }

private:
    /// Where the units are, from the header on.
    qptrdiff Offset(TString const& key) const
    {
        return reinterpret_cast<qptrdiff>(key.constData()) - reinterpret_cast<qptrdiff>(&m_header);
    }

    QStringData m_header; ///< Not counted, and never written: Qt takes it for that of a constant.
    QString m_text;
};

/// Given as a default, it tells that there is no value: a number that nobody stores.
qulonglong MissingValue()
{
    return reinterpret_cast<quintptr>(&kGroupNames);
}

std::vector<TString> ToTexts(QStringList const& list)
{
    return std::vector<TString>(list.begin(), list.end());
}

/// Of slashes, which separate levels, Qt leaves nothing.
bool NamesNothing(TString const& key)
{
    return key.findOneNotOf(u"/") < 0;
}

} // namespace

void TSettings::Configure(TString const& org, TString const& app, TString const& suffix)
{
    Names& names = ConfiguredNames();
    names.organisation = org;
    names.application = suffix.isEmpty() ? app : (app + u" " + suffix).replace(u" ", u"-");
}

TString TSettings::OrgName()
{
    return ConfiguredNames().organisation;
}

TString TSettings::AppName(Group group)
{
    return group == ReportingServer ? TString(u"ReportingServer") : ConfiguredNames().application;
}

TString TSettings::GroupName(Group group)
{
    auto const number = static_cast<std::size_t>(group);
    return number < std::size(kGroupNames) ? TString(kGroupNames[number]) : TString();
}

TString TSettings::KeyName(Key key)
{
    return key == Application ? TString(u"Application") : TString();
}

TSettings::TSettings(Group group, TString const& sub1, TString const& sub2)
    : TSettings(UserScope, group, group, sub1, sub2)
{}

TSettings::TSettings(Scope scope, Group group, TString const& sub1, TString const& sub2)
    : TSettings(scope, group, group, sub1, sub2)
{}

TSettings::TSettings(Scope scope, Group appGroup, Group group, TString const& sub1,
                     TString const& sub2)
    : QSettings(QtScope(scope), OrgName().toQString(), AppName(appGroup).toQString())
{
    init(group, sub1, sub2);
}

TSettings::~TSettings() = default;

void TSettings::init(Group group, TString const& sub1, TString const& sub2)
{
    TString const name = GroupName(group);
    if (name.isEmpty()) {
        return;
    }
    beginGroup(name.toQString());
    for (TString const* const sub : {&sub1, &sub2}) {
        if (!sub->isEmpty()) {
            beginGroup(sub->toQString());
        }
    }
}

bool TSettings::GetBoolValue(TString const& key, bool defaultValue) const
{
    return value(BorrowedKey(key), defaultValue).toBool();
}

int TSettings::GetIntValue(TString const& key, int defaultValue) const
{
    return value(BorrowedKey(key), defaultValue).toInt();
}

unsigned TSettings::GetUintValue(TString const& key, unsigned defaultValue) const
{
    return value(BorrowedKey(key), defaultValue).toUInt();
}

TString TSettings::GetStringValue(TString const& key, TString const& defaultValue) const
{
    QVariant const found = value(BorrowedKey(key), MissingValue());
    bool const isMissing =
        found.type() == QVariant::ULongLong && found.toULongLong() == MissingValue();
    return isMissing ? defaultValue : TString(found.toString());
}

std::vector<signed char> TSettings::GetBinaryValue(TString const& key) const
{
    QByteArray const bytes = value(BorrowedKey(key)).toByteArray();
    return std::vector<signed char>(bytes.begin(), bytes.end());
}

QList<QString> TSettings::GetStringList(TString const& key) const
{
    return value(BorrowedKey(key)).toStringList();
}

QList<QColor> TSettings::GetColorList(TString const& key) const
{
    QList<QColor> colors;
    for (QVariant const& color : value(BorrowedKey(key)).toList()) {
        colors.append(color.value<QColor>());
    }
    return colors;
}

void TSettings::SetBoolValue(TString const& key, bool newValue)
{
    setValue(key.toQString(), newValue);
}

void TSettings::SetIntValue(TString const& key, int newValue)
{
    setValue(key.toQString(), newValue);
}

void TSettings::SetUintValue(TString const& key, unsigned newValue)
{
    setValue(key.toQString(), newValue);
}

void TSettings::SetStringValue(TString const& key, TString const& newValue)
{
    setValue(key.toQString(), newValue.toQString());
}

void TSettings::SetBinaryValue(TString const& key, std::vector<signed char> const& newValue)
{
    SetBinaryValue(key, newValue.data(), newValue.size());
}

void TSettings::SetBinaryValue(TString const& key, void const* data, unsigned long lengthInBytes)
{
    if (lengthInBytes > kMaxBinaryBytes) {
        throw std::length_error("TSettings::SetBinaryValue: too many bytes");
    }
    setValue(key.toQString(),
             QByteArray(static_cast<char const*>(data), static_cast<int>(lengthInBytes)));
}

void TSettings::SetStringList(TString const& key, QList<QString> const& newValue)
{
    setValue(key.toQString(), QStringList(newValue));
}

void TSettings::SetColorList(TString const& key, QList<QColor> const& newValue)
{
    QVariantList colors;
    colors.reserve(newValue.size());
    for (QColor const& color : newValue) {
        colors.append(color);
    }
    setValue(key.toQString(), colors);
}

bool TSettings::ValueExists(TString const& key) const
{
    return contains(BorrowedKey(key));
}

void TSettings::Remove(TString const& key)
{
    if (!NamesNothing(key) || !group().isEmpty()) {
        remove(key.toQString());
    }
}

std::vector<TString> TSettings::Values() const
{
    return ToTexts(childKeys());
}

std::vector<TString> TSettings::ChildGroups() const
{
    return ToTexts(childGroups());
}

bool TSettings::GetBoolValue(Group group, TString const& key, bool defaultValue)
{
    return TSettings(group).GetBoolValue(key, defaultValue);
}

int TSettings::GetIntValue(Group group, TString const& key, int defaultValue)
{
    return TSettings(group).GetIntValue(key, defaultValue);
}

unsigned TSettings::GetUintValue(Group group, TString const& key, unsigned defaultValue)
{
    return TSettings(group).GetUintValue(key, defaultValue);
}

TString TSettings::GetStringValue(Group group, TString const& key, TString const& defaultValue)
{
    return TSettings(group).GetStringValue(key, defaultValue);
}

std::vector<signed char> TSettings::GetBinaryValue(Group group, TString const& key)
{
    return TSettings(group).GetBinaryValue(key);
}

QList<QString> TSettings::GetStringList(Group group, TString const& key)
{
    return TSettings(group).GetStringList(key);
}

QList<QColor> TSettings::GetColorList(Group group, TString const& key)
{
    return TSettings(group).GetColorList(key);
}

void TSettings::SetBoolValue(Group group, TString const& key, bool newValue)
{
    TSettings(group).SetBoolValue(key, newValue);
}

void TSettings::SetIntValue(Group group, TString const& key, int newValue)
{
    TSettings(group).SetIntValue(key, newValue);
}

void TSettings::SetUintValue(Group group, TString const& key, unsigned newValue)
{
    TSettings(group).SetUintValue(key, newValue);
}

void TSettings::SetStringValue(Group group, TString const& key, TString const& newValue)
{
    TSettings(group).SetStringValue(key, newValue);
}

void TSettings::SetBinaryValue(Group group, TString const& key,
                               std::vector<signed char> const& newValue)
{
    TSettings(group).SetBinaryValue(key, newValue);
}

void TSettings::SetBinaryValue(Group group, TString const& key, void const* data,
                               unsigned long lengthInBytes)
{
    TSettings(group).SetBinaryValue(key, data, lengthInBytes);
}

void TSettings::SetStringList(Group group, TString const& key, QList<QString> const& newValue)
{
    TSettings(group).SetStringList(key, newValue);
}

void TSettings::SetColorList(Group group, TString const& key, QList<QColor> const& newValue)
{
    TSettings(group).SetColorList(key, newValue);
}

bool TSettings::ValueExists(Group group, TString const& key)
{
    return TSettings(group).ValueExists(key);
}

std::vector<TString> TSettings::Values(Group group)
{
    return TSettings(group).Values();
}

std::vector<TString> TSettings::ChildGroups(Group group)
{
    return TSettings(group).ChildGroups();
}

void TSettings::Remove(Group group, TString const& sub1, TString const& sub2)
{
    if ((sub1.isEmpty() || !NamesNothing(sub1)) && (sub2.isEmpty() || !NamesNothing(sub2))) {
        TSettings(group, sub1, sub2).Remove(TString());
    }
}

void TSettings::RemoveGroup(Group group)
{
    Remove(group, TString(), TString());
}

TString TSettings::GetStringValueFromScope(Scope scope, Group group, TString const& key,
                                           TString const& defaultValue)
{
    return TSettings(scope, group).GetStringValue(key, defaultValue);
}

bool TSettings::ValueExistsFromScope(Scope scope, Group group, TString const& key)
{
    return TSettings(scope, group).ValueExists(key);
}

void TSettings::SetStringValueAndScope(Scope scope, Group appGroup, Group group, TString const& key,
                                       TString const& newValue)
{
    TSettings(scope, appGroup, group, TString(), TString()).SetStringValue(key, newValue);
}
