/// A message template with positional markers, in the form that the lowest layers use.

#pragma once

#include "korsys/main/KorSysExport.h"
#include "korsys/main/text/TStringCore.h"

#include <vector>

/// A template and the values of its markers "%1" to "%99". Rendering finds no fault, so that a
/// message about a failure cannot fail itself: what is not a marker with a value stays as written.
///
///     TFormatStringCore("%1 of %2").arg({u"3", u"7"}).result() // "3 of 7"
///
/// Thread safety: one object may be read from several threads; a write needs it alone.
class KORSYS_EXPORT TFormatStringCore
{
public:
    explicit TFormatStringCore(TStringCore const& formatString);

    /// Replaces all parameters; the first is that of "%1".
    TFormatStringCore& arg(std::vector<TStringCore> const& parameters);

    /// The template with its markers replaced. Parameters are inserted literally, "%%" is a
    /// percent sign. Left as written: a marker without a parameter, "%0", "%01", "%100", a percent
    /// sign before anything else.
    TStringCore result() const;

private:
    TStringCore m_formatString;
    std::vector<TStringCore> m_parameters;
};
