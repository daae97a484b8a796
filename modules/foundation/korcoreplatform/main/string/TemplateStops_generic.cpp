#include "korcoreplatform/main/string/TemplateStops_p.h"

#include <algorithm>
#include <cstring>

namespace {

// Vector types of the compiler: every machine compares eight units in its own way.
constexpr int kVector = 8;
using Vector [[gnu::vector_size(16)]] = std::uint16_t;
using Halves [[gnu::vector_size(16)]] = std::uint64_t;

std::uint64_t FindInVector(char16_t const* units, Vector percents, Vector others)
{
    constexpr Vector kLaneBits = {1, 2, 4, 8, 16, 32, 64, 128};
    Vector vector;
    std::memcpy(&vector, units, sizeof(vector));
    auto const stops = reinterpret_cast<Vector>((vector == percents) | (vector == others));
    auto const halves = reinterpret_cast<Halves>(stops & kLaneBits);
    return (halves[0] | halves[1]) * 0x0001000100010001 >> 48; // the sum of the four lanes
}

} // namespace

std::uint64_t TemplateStops::Find(char16_t const* units, int n, char16_t other) noexcept
{
    Vector const percents = Vector{} + std::uint16_t(u'%');
    Vector const others = Vector{} + std::uint16_t(other);
    if (n < kVector) {
        char16_t padded[kVector] = {};
        std::copy_n(units, n, padded);
        return FindInVector(padded, percents, others) & ((1u << n) - 1);
    }
    std::uint64_t bits = 0;
    for (int i = 0; i < n; i += kVector) {
        int const at = std::min(i, n - kVector); // the last one may overlap
        bits |= FindInVector(units + at, percents, others) << at;
    }
    return bits;
}
