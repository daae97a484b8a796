/// What the tests of this module share: the error check, and texts that failures show as text.

#pragma once

#include "korcoreplatform/main/string/TFormatString.h"
#include "korcoreplatform/main/string/TString.h"
#include "korsys/tests/support/KorTest.h"

#include <QByteArray>
#include <QString>

inline void PrintTo(TString const& text, std::ostream* out)
{
    *out << '"' << text.toStdString() << '"';
}
