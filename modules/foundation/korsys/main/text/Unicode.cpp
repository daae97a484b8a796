#include "korsys/main/text/Unicode.h"

#include <cstring>

namespace {

/// The first CR with LF behind it, or `end`.
char* FindCrLf(char* from, char* end)
{
    while (from != end) {
        void* const found = std::memchr(from, '\r', static_cast<std::size_t>(end - from));
        if (found == nullptr) {
            return end;
        }
        char* const cr = static_cast<char*>(found);
        from = cr + 1;
        if (from != end && *from == '\n') {
            return cr;
        }
    }
    return end;
}

} // namespace

std::size_t Unicode::normalizeLineEndings(char* data, std::size_t length) noexcept
{
    if (length == 0) {
        return 0; // data may be null
    }
    char* const end = data + length;
    char* out = FindCrLf(data, end); // what is before the first CR LF is in its place
    for (char* cr = out; cr != end;) {
        char* const line = cr + 1; // begins with the LF
        cr = FindCrLf(line, end);
        auto const bytes = static_cast<std::size_t>(cr - line);
        std::memmove(out, line, bytes);
        out += bytes;
    }
    return static_cast<std::size_t>(out - data);
}
