#include "korcoreplatform/main/core/logging/Severity.h"

#include <cstddef>
#include <iterator>
#include <vector>

namespace {

/// By value.
constexpr char16_t const* kNames[] = {u"Trace", u"Debug", u"Info", u"Warn",
                                      u"Error", u"Fatal", u"Off",  u"LogDetail"};

/// Never destroyed: records are written until the very end of the process.
std::vector<TString> const& Names()
{
    static auto const& s_names = *new std::vector<TString>(std::begin(kNames), std::end(kNames));
    return s_names;
}

} // namespace

TString const& TLog::SeverityToString(Severity severity)
{
    auto const value = static_cast<std::size_t>(severity);
    return Names()[value < Names().size() ? value : static_cast<std::size_t>(Severity::Off)];
}

TLog::Severity TLog::SeverityFromString(TString const& name)
{
    for (std::size_t i = 0; i < Names().size(); ++i) {
        if (Names()[i].compare(name, TString::CaseInsensitive) == 0) {
            return static_cast<Severity>(i);
        }
    }
    return Severity::Off;
}
