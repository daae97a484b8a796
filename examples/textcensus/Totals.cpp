#include "Totals.h"

namespace TextCensus {
namespace {

Counts CountsOf(TextCount const& count)
{
    return {1, count.bytes, count.codeUnits, count.lines};
}

template <std::size_t count>
void AddGroups(std::array<Group, count>& groups, std::array<Group, count> const& others)
{
    for (std::size_t i = 0; i < count; ++i) {
        groups[i].counts += others[i].counts;
    }
}

template <class Item>
void AppendItems(std::vector<Item>& items, std::vector<Item> const& others)
{
    items.insert(items.end(), others.begin(), others.end());
}

} // namespace

Counts& Counts::operator+=(Counts const& other)
{
    files += other.files;
    bytes += other.bytes;
    codeUnits += other.codeUnits;
    lines += other.lines;
    return *this;
}

void Totals::Add(TPath const& path, TextCount const& count)
{
    std::size_t const encoding = IndexOf(count.encoding);
    std::size_t const noMark = byMark.size() - 1; // only the encodings before it have a mark
    Counts const counts = CountsOf(count);
    all += counts;
    byEncoding[encoding].counts += counts;
    byLineEnding[static_cast<std::size_t>(count.lineEnding)].counts += counts;
    byMark[count.hasByteOrderMark ? encoding : noMark].counts += counts;
    if (count.replacements > 0) {
        replaced += counts;
        replacedFiles.push_back({path, count.replacements});
    }
    for (LongLine const& line : count.longestLines.Lines()) {
        longestLines.Take({line.codeUnits, path, line.number});
    }
}

void Totals::Append(Totals const& next)
{
    all += next.all;
    AddGroups(byEncoding, next.byEncoding);
    AddGroups(byLineEnding, next.byLineEnding);
    AddGroups(byMark, next.byMark);
    replaced += next.replaced;
    AppendItems(replacedFiles, next.replacedFiles);
    for (LongLine const& line : next.longestLines.Lines()) {
        longestLines.Take(line);
    }
    AppendItems(unreadable, next.unreadable);
    skipped += next.skipped;
}

} // namespace TextCensus
