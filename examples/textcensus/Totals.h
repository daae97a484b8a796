/// The sums over all files.

#pragma once

#include "LongestLines.h"
#include "TextCount.h"
#include "Unreadable.h"

#include "korcoreplatform/main/core/files/TPath.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace TextCensus {

/// What every group of files is counted by.
struct Counts
{
    std::uint64_t files = 0;
    std::uint64_t bytes = 0;
    std::uint64_t codeUnits = 0;
    std::uint64_t lines = 0;

    Counts& operator+=(Counts const& other);
};

/// A file whose bytes are not all text in its encoding.
struct ReplacedFile
{
    TPath path;
    std::uint64_t characters = 0; ///< How many U+FFFD stand for bytes.
};

/// A group of files by the name that reports show.
struct Group
{
    char16_t const* name;
    Counts counts;
};

/// The census of all files: groups, of which each array adds up to `all`, and what stands out.
struct Totals
{
    // Both throw `std::bad_alloc`.

    void Add(TPath const& path, TextCount const& count);
    void Append(Totals const& next); ///< Of files that come behind those counted here.

    Counts all;
    /// In the order of `EncodingType`, `byMark` as well.
    std::array<Group, 4> byEncoding = {{{kEncodingNames[0], {}},
                                        {kEncodingNames[1], {}},
                                        {kEncodingNames[2], {}},
                                        {kEncodingNames[3], {}}}};
    /// In the order of `LineEnding`.
    std::array<Group, 5> byLineEnding = {
        {{u"LF", {}}, {u"CRLF", {}}, {u"CR", {}}, {u"mixed", {}}, {u"none", {}}}};
    std::array<Group, 4> byMark = {
        {{u"utf-8", {}}, {u"utf-16le", {}}, {u"utf-32le", {}}, {u"none", {}}}};
    Counts replaced;
    std::vector<ReplacedFile> replacedFiles;
    LongestLines longestLines;
    std::vector<Unreadable> unreadable;
    std::uint64_t skipped = 0;
};

} // namespace TextCensus
