#include "LastRoots.h"

#include "korcoreplatform/main/core/files/PathFunctions.h"
#include "korcoreplatform/main/core/system/TSettings.h"
#include "korcoreplatform/main/string/TString.h"

#include <QList>
#include <QString>

namespace TextCensus {
namespace {

TString const& Key()
{
    static TString const s_key(u"Last");
    return s_key;
}

} // namespace

void OpenSettings()
{
    TSettings::Configure(u"korcoreplatform", u"textcensus", TString());
}

std::vector<TPath> LastRoots()
{
    std::vector<TPath> roots;
    for (QString const& root : TSettings::GetStringList(TSettings::Directories, Key())) {
        roots.emplace_back(TString(root));
    }
    return roots;
}

void KeepRoots(std::vector<TPath> const& roots)
{
    QList<QString> texts;
    for (TPath const& root : roots) {
        TPath const absolute = root.IsAbsolute() ? root : CurrentPath() / root;
        texts.append(absolute.NativeString().toQString());
    }
    TSettings::SetStringList(TSettings::Directories, Key(), texts);
}

} // namespace TextCensus
