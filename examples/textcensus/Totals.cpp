#include "Totals.h"

namespace TextCensus {
namespace {

void AddTo(Counts& counts, TextCount const& count)
{
    ++counts.files;
    counts.bytes += count.bytes;
    counts.codeUnits += count.codeUnits;
    counts.lines += count.lines;
}

} // namespace

void Totals::Add(TPath const& path, TextCount const& count)
{
    std::size_t const encoding = static_cast<std::size_t>(count.encoding - EncodingUtf8);
    std::size_t const noMark = byMark.size() - 1; // only the encodings before it have a mark
    AddTo(all, count);
    AddTo(byEncoding[encoding].counts, count);
    AddTo(byLineEnding[static_cast<std::size_t>(count.lineEnding)].counts, count);
    AddTo(byMark[count.hasByteOrderMark ? encoding : noMark].counts, count);
    if (count.replacements > 0) {
        AddTo(replaced, count);
        replacedFiles.push_back({path, count.replacements});
    }
    for (LongLine const& line : count.longestLines.Lines()) {
        longestLines.Take({line.codeUnits, path, line.number});
    }
}

} // namespace TextCensus
