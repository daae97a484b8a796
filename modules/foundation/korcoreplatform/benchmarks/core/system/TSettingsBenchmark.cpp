// Settings beside QSettings used directly.

#include "korcoreplatform/benchmarks/support/PeerTable.h"
#include "korcoreplatform/main/core/system/TSettings.h"
#include "korcoreplatform/main/string/TString.h"

#include <QSettings>
#include <QString>
#include <QTemporaryDir>
#include <QVariant>

#include <memory>
#include <stdexcept>
#include <string>

namespace {

using PeerTable::Repeat;
using PeerTable::RepeatAction;
using PeerTable::Row;

constexpr double kMark = 1.1;

/// A folder for the settings files, which goes when the program ends.
void UseOwnFolder()
{
    static QTemporaryDir const s_folder;
    if (!s_folder.isValid()) {
        throw std::runtime_error("no temporary folder");
    }
    for (auto const scope : {QSettings::UserScope, QSettings::SystemScope}) {
        QSettings::setPath(QSettings::NativeFormat, scope, s_folder.path());
    }
    TSettings::Configure(u"Measured", u"Settings", TString());
}

std::unique_ptr<QSettings> Opened()
{
    auto settings =
        std::make_unique<QSettings>(QStringLiteral("Measured"), QStringLiteral("Settings"));
    settings->beginGroup(QStringLiteral("Directories"));
    return settings;
}

bool OfOneObject()
{
    UseOwnFolder();
    auto const ours = std::make_shared<TSettings>(TSettings::Directories);
    std::shared_ptr<QSettings> const peer = Opened();
    TString const key(u"window width");
    QString const qKey = key.toQString();
    TString const textKey(u"last opened folder");
    QString const qTextKey = textKey.toQString();
    TString const text(u"/home/somebody/documents/reports");
    QString const qText = text.toQString();
    TString const none(u"none");
    TString const absent(u"absent");
    ours->SetIntValue(key, 640);
    ours->SetStringValue(textKey, text);

    Row("get an int", kMark)
        .Ours(Repeat([=] { return ours->GetIntValue(key, 1); }))
        .Peer("QSettings", Repeat([=] { return peer->value(qKey, 1).toInt(); }));
    Row("get a text", kMark)
        .Ours(Repeat([=] { return ours->GetStringValue(textKey, none); }))
        .Peer("QSettings",
              Repeat([=] { return peer->value(qTextKey, QStringLiteral("none")).toString(); }));
    Row("get what is not there", kMark)
        .Ours(Repeat([=] { return ours->GetStringValue(absent, none); }))
        .Peer("QSettings", Repeat([=] {
                  return peer->value(QStringLiteral("absent"), QStringLiteral("none")).toString();
              }));
    // A setting keeps its key and its text as QString, so a setter has to make them: the limit is
    // the peer with that.
    Row("set an int", kMark)
        .Ours(RepeatAction([=] { ours->SetIntValue(key, 641); }))
        .Peer("QSettings", RepeatAction([=] { peer->setValue(qKey, 641); }))
        .Limit("QStrings made", RepeatAction([=] { peer->setValue(key.toQString(), 641); }));
    Row("set a text", kMark)
        .Ours(RepeatAction([=] { ours->SetStringValue(textKey, text); }))
        .Peer("QSettings", RepeatAction([=] { peer->setValue(qTextKey, qText); }))
        .Limit("QStrings made",
               RepeatAction([=] { peer->setValue(textKey.toQString(), text.toQString()); }));
    return true;
}

bool OfOneCall()
{
    TString const key(u"flag");
    QString const qKey = key.toQString();
    TSettings::SetBoolValue(TSettings::Directories, key, true);
    Row("open and get", kMark)
        .Ours(Repeat([=] { return TSettings::GetBoolValue(TSettings::Directories, key, false); }))
        .Peer("QSettings", Repeat([=] { return Opened()->value(qKey, false).toBool(); }));
    Row("open, set and write", kMark)
        .Runs(5) // no file is written in the same time twice
        .Ours(RepeatAction([=] { TSettings::SetBoolValue(TSettings::Directories, key, true); }))
        .Peer("QSettings", RepeatAction([=] { Opened()->setValue(qKey, true); }));
    return true;
}

[[maybe_unused]] bool const s_registered = OfOneObject() && OfOneCall();

} // namespace
