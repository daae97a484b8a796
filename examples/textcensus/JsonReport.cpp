#include "JsonReport.h"

#include "Census.h"
#include "JsonWriter.h"

#include <array>
#include <cstddef>
#include <vector>

namespace TextCensus {
namespace {

void WriteNumber(JsonWriter& json, char16_t const* key, std::uint64_t number)
{
    json.Key(key);
    json.Number(number);
}

void WriteText(JsonWriter& json, char16_t const* key, TString const& text)
{
    json.Key(key);
    json.Text(text);
}

void WriteCounts(JsonWriter& json, char16_t const* key, Counts const& counts)
{
    json.Key(key);
    json.BeginObject();
    WriteNumber(json, u"files", counts.files);
    WriteNumber(json, u"bytes", counts.bytes);
    WriteNumber(json, u"codeUnits", counts.codeUnits);
    WriteNumber(json, u"lines", counts.lines);
    json.EndObject();
}

template <std::size_t count>
void WriteGroups(JsonWriter& json, char16_t const* key, std::array<Group, count> const& groups)
{
    json.Key(key);
    json.BeginObject();
    for (Group const& group : groups) {
        WriteCounts(json, group.name, group.counts);
    }
    json.EndObject();
}

/// An array of objects; `write` writes what one of them holds.
template <class Item, class Write>
void WriteList(JsonWriter& json, char16_t const* key, std::vector<Item> const& items, Write write)
{
    json.Key(key);
    json.BeginArray();
    for (Item const& item : items) {
        json.BeginObject();
        write(item);
        json.EndObject();
    }
    json.EndArray();
}

void WriteLists(JsonWriter& json, Totals const& totals)
{
    WriteList(json, u"replacedFiles", totals.replacedFiles, [&json](ReplacedFile const& file) {
        WriteText(json, u"path", file.path);
        WriteNumber(json, u"characters", file.characters);
    });
    WriteList(json, u"longestLines", totals.longestLines.Lines(), [&json](LongLine const& line) {
        WriteText(json, u"path", line.path);
        WriteNumber(json, u"line", line.number);
        WriteNumber(json, u"codeUnits", line.codeUnits);
    });
    WriteList(json, u"unreadable", totals.unreadable, [&json](Unreadable const& file) {
        WriteText(json, u"path", file.path);
        WriteText(json, u"reason", file.reason);
    });
}

void WriteComparison(JsonWriter& json, FileComparison const& comparison)
{
    json.Key(u"comparedWithFile");
    json.BeginObject();
    WriteNumber(json, u"files", comparison.files);
    WriteNumber(json, u"agreed", comparison.agreed);
    WriteList(json, u"differences", comparison.differences, [&json](Difference const& difference) {
        WriteText(json, u"ours", difference.ours);
        WriteText(json, u"theirs", difference.theirs);
        WriteNumber(json, u"files", difference.files);
        WriteText(json, u"example", difference.example);
    });
    WriteText(json, u"problem", comparison.problem);
    json.EndObject();
}

} // namespace

TString JsonReport(Census const& census)
{
    Totals const& totals = census.totals;
    JsonWriter json;
    json.BeginObject();
    WriteCounts(json, u"all", totals.all);
    WriteGroups(json, u"encodings", totals.byEncoding);
    WriteGroups(json, u"lineEndings", totals.byLineEnding);
    WriteGroups(json, u"byteOrderMarks", totals.byMark);
    WriteCounts(json, u"replaced", totals.replaced);
    WriteLists(json, totals);
    WriteNumber(json, u"skipped", totals.skipped);
    if (census.comparison) {
        WriteComparison(json, *census.comparison);
    }
    json.EndObject();
    return json.Result() + u'\n';
}

} // namespace TextCensus
