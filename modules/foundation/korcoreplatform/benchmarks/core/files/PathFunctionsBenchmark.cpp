// The normal form of a path beside Qt's.

#include "korcoreplatform/benchmarks/support/PeerTable.h"
#include "korcoreplatform/main/core/files/PathFunctions.h"
#include "korcoreplatform/main/core/files/TPath.h"
#include "korcoreplatform/main/string/TString.h"

#include <QDir>
#include <QString>

#include <string>

namespace {

using PeerTable::Repeat;
using PeerTable::Row;

bool NormalForms()
{
    struct Sample
    {
        char const* name;
        QString text;
    };
    Sample const samples[] = {
        {"normal path, clean, short", "/tmp/a.txt"},
        {"normal path, clean", "/home/alex/projects/atlas/src/render/pipeline/shader_set.cpp"},
        {"normal path, messy, short", "/tmp/./a/../a.txt"},
        {"normal path, messy", "/home/alex/./projects//atlas/build/../src/render/old/../../render/"
                               "pipeline/./shader_set.cpp"},
    };
    for (Sample const& sample : samples) {
        Row(sample.name, 1.0)
            .Ours(Repeat([path = TPath(TString(sample.text))] { return NormalPath(path); }))
            .Peer("QDir", Repeat([text = sample.text] { return QDir::cleanPath(text); }));
    }
    return true;
}

[[maybe_unused]] bool const s_registered = NormalForms();

} // namespace
