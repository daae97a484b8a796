/// Prints the catalogue of all errors as Markdown.

#include <algorithm>
#include <cstdio>
#include <string>
#include <tuple>
#include <vector>

namespace {

struct Row
{
    std::string category;
    std::string kind;
    std::string number;
    std::string message;
};

std::vector<Row> AllRows()
{
    return {
#define KOR_ERROR_ID(category, kind, number, message) {#category, #kind, #number, message},
#include "korsys/main/error/KorErrorIds.h"
    };
}

/// A message as code, so that its signs mean nothing to Markdown; a description as it is.
std::string MessageCell(std::string const& message)
{
    bool const isDescription = !message.empty() && message.front() == '(';
    std::string const quote = isDescription ? "" : "`";
    std::string text;
    for (char const c : message) {
        text += c == '|' ? "\\|" : std::string(1, c); // a bar would end the cell
    }
    return quote + text + quote;
}

} // namespace

int main()
{
    std::vector<Row> rows = AllRows();
    std::sort(rows.begin(), rows.end(), [](Row const& a, Row const& b) {
        return std::tie(a.category, a.number) < std::tie(b.category, b.number);
    });
    std::printf("# Error catalogue\n\n"
                "Every failure that the library reports carries one of these %zu ids. A handler\n"
                "or a log search goes by the id; the message may carry values, shown as %%1, %%2\n"
                "and so on. The category is that of the exception's class; scan strings use that\n"
                "of format strings. For the kind LogicAssert the message is the asserted text. A\n"
                "message in parentheses is made elsewhere.\n\n"
                "This file is made from `KorErrorIds.h`.\n\n"
                "| Id | Category | Kind | Message |\n"
                "|---|---|---|---|\n",
                rows.size());
    for (Row const& row : rows) {
        std::printf("| `%s_%s_%s` | %s | %s | %s |\n", row.category.c_str(), row.kind.c_str(),
                    row.number.c_str(), row.category.c_str(), row.kind.c_str(),
                    MessageCell(row.message).c_str());
    }
    return std::fflush(stdout) == 0 && std::ferror(stdout) == 0 ? 0 : 1;
}
