#include "korcoreplatform/main/core/logging/PlainUnits_p.h"

std::size_t TLog::CopyPlainUnits(char16_t const* from, std::size_t n, char* to) noexcept
{
    std::size_t done = 0;
    for (; done < n && IsPlainUnit(from[done]); ++done) {
        to[done] = static_cast<char>(from[done]);
    }
    return done;
}
