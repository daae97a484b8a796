/// The longest of many lines.

#pragma once

#include "korcoreplatform/main/core/files/TPath.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace TextCensus {

/// A line by its length and its place.
struct LongLine
{
    std::uint64_t codeUnits = 0;
    TPath path;
    std::uint64_t number = 0; ///< Counted from 1.
};

/// Keeps the ten longest of the lines it is shown, empty ones never. Which ones stay does not
/// depend on the order in which they come: among equally long ones the path and the number decide.
class LongestLines
{
public:
    static constexpr std::size_t kCount = 10;

    /// False when a line of that length is surely not among the longest.
    bool MayTake(std::uint64_t codeUnits) const
    {
        return codeUnits > 0 && (m_lines.size() < kCount || codeUnits >= m_lines.back().codeUnits);
    }
    void Take(LongLine const& line);

    std::vector<LongLine> const& Lines() const { return m_lines; } ///< The longest first.

private:
    std::vector<LongLine> m_lines;
};

} // namespace TextCensus
