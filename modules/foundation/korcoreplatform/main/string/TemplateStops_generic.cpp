#include "korcoreplatform/main/string/TemplateStops_p.h"

std::uint64_t TemplateStops::Find(char16_t const* units, int n, char16_t other) noexcept
{
    std::uint64_t bits = 0;
    for (int i = 0; i < n; ++i) {
        bool const isStop = units[i] == u'%' || units[i] == other;
        bits |= std::uint64_t(isStop) << i;
    }
    return bits;
}
