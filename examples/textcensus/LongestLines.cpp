#include "LongestLines.h"

#include <algorithm>

namespace TextCensus {
namespace {

bool StandsBefore(LongLine const& a, LongLine const& b)
{
    if (a.codeUnits != b.codeUnits) {
        return a.codeUnits > b.codeUnits;
    }
    if (a.path < b.path || b.path < a.path) {
        return a.path < b.path;
    }
    return a.number < b.number;
}

} // namespace

void LongestLines::Take(LongLine const& line)
{
    if (!MayTake(line.codeUnits)) {
        return;
    }
    m_lines.insert(std::upper_bound(m_lines.begin(), m_lines.end(), line, StandsBefore), line);
    if (m_lines.size() > kCount) {
        m_lines.pop_back();
    }
}

} // namespace TextCensus
