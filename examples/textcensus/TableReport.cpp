#include "TableReport.h"

#include "Census.h"
#include "Grouped.h"

#include "korcoreplatform/main/string/TFormatString.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace TextCensus {
namespace {

constexpr std::size_t kListedFiles = 10;
constexpr int kLabelWidth = 20;
constexpr int kListNumberWidth = 10;

using Cells = std::array<TString, 4>;

bool IsControl(char16_t c)
{
    return c < u' ' || (c >= 0x7F && c < 0xA0);
}

/// The text with its control characters spelled out ("\x0A"): it stays on one line and cannot
/// steer a terminal.
TString Printable(TString const& text)
{
    if (std::none_of(text.cbegin(), text.cend(), IsControl)) {
        return text;
    }
    TString printable;
    for (char16_t const c : text) {
        if (IsControl(c)) {
            printable += u"\\x" + TString::number(c, 16, 2, u'0').toUpper();
        } else {
            printable += c;
        }
    }
    return printable;
}

/// A group without files has nothing more to show.
Cells CellsOf(Counts const& counts)
{
    if (counts.files == 0) {
        return {u"0"};
    }
    return {Grouped(counts.files), Grouped(counts.bytes), Grouped(counts.codeUnits),
            Grouped(counts.lines)};
}

/// The rows of counts, one column a kind of count. No cell is wider than that of all files
/// together.
class CountTable
{
public:
    explicit CountTable(Counts const& all) : m_widest(CellsOf(all))
    {
        AddCells(u"", m_headings);
        AddRow(u"all", all);
    }

    void AddRow(TString const& label, Counts const& counts) { AddCells(label, CellsOf(counts)); }

    template <std::size_t count>
    void AddGroups(TString const& heading, std::array<Group, count> const& groups)
    {
        m_text += u"\n" + heading + u"\n";
        for (Group const& group : groups) {
            AddRow(TString(u"  ") + group.name, group.counts);
        }
    }

    TString const& Text() const { return m_text; }

private:
    void AddCells(TString const& label, Cells const& cells)
    {
        TString row = label.leftJustified(kLabelWidth);
        for (std::size_t i = 0; i < cells.size(); ++i) {
            int const width = std::max(m_widest[i].length(), m_headings[i].length());
            row += cells[i].rightJustified(width + 3);
        }
        m_text += row.trimRight() + u'\n';
    }

    Cells const m_headings = {u"files", u"bytes", u"code units", u"lines"};
    Cells const m_widest;
    TString m_text;
};

TString NumberedLine(std::uint64_t number, TString const& text)
{
    return TFormat(u"%1  %2\n", Grouped(number).rightJustified(kListNumberWidth), text);
}

TString ReplacedFilesText(std::vector<ReplacedFile> files)
{
    if (files.empty()) {
        return TString();
    }
    std::size_t const listed = std::min(files.size(), kListedFiles);
    std::stable_sort(files.begin(), files.end(), [](ReplacedFile const& a, ReplacedFile const& b) {
        return a.characters > b.characters;
    });
    TString text = u"\nMost replaced characters (U+FFFD for bytes that are no text)\n";
    for (std::size_t i = 0; i < listed; ++i) {
        text += NumberedLine(files[i].characters, Printable(files[i].path));
    }
    if (listed < files.size()) {
        text += TFormat(u"            and %1 more files\n", Grouped(files.size() - listed));
    }
    return text;
}

TString LongestLinesText(std::vector<LongLine> const& lines)
{
    if (lines.empty()) {
        return TString();
    }
    TString text = u"\nLongest lines (code units, place)\n";
    for (LongLine const& line : lines) {
        text += NumberedLine(line.codeUnits, TFormat(u"%1:%2", Printable(line.path), line.number));
    }
    return text;
}

TString UnreadableText(std::vector<Unreadable> const& files)
{
    if (files.empty()) {
        return TString();
    }
    TString text = TFormat(u"\nCould not be read (%1)\n", Grouped(files.size()));
    for (Unreadable const& file : files) {
        text += TFormat(u"  %1: %2\n", Printable(file.path), Printable(file.reason));
    }
    return text;
}

TString SkippedText(std::uint64_t skipped)
{
    if (skipped == 0) {
        return TString();
    }
    return TFormat(u"\nSkipped: %1 (links to folders, and what is neither file nor folder)\n",
                   Grouped(skipped));
}

TString ComparisonText(FileComparison const& comparison)
{
    TString text =
        TFormat(u"\nEncoding compared with file (%1 files)\n", Grouped(comparison.files));
    text += NumberedLine(comparison.agreed, u"the same");
    for (Difference const& difference : comparison.differences) {
        text += NumberedLine(difference.files,
                             TFormat(u"%1, file: %2 (%3)", difference.ours,
                                     Printable(difference.theirs), Printable(difference.example)));
    }
    return comparison.problem.isEmpty() ? text
                                        : text + TFormat(u"  %1\n", Printable(comparison.problem));
}

} // namespace

TString TableReport(Census const& census)
{
    Totals const& totals = census.totals;
    CountTable table(totals.all);
    table.AddGroups(u"Encoding", totals.byEncoding);
    table.AddGroups(u"Line ending", totals.byLineEnding);
    table.AddGroups(u"Byte-order mark", totals.byMark);
    table.AddGroups(u"Decoding", std::array<Group, 1>{{{u"replaced bytes", totals.replaced}}});
    return TString::join({table.Text(), ReplacedFilesText(totals.replacedFiles),
                          LongestLinesText(totals.longestLines.Lines()),
                          census.comparison ? ComparisonText(*census.comparison) : TString(),
                          UnreadableText(totals.unreadable), SkippedText(totals.skipped)},
                         TString());
}

} // namespace TextCensus
