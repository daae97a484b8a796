#include "korcoreplatform/main/core/logging/TimeText_p.h"

#include <charconv>

#include <time.h>

namespace {

char* WriteTwoDigits(char* to, char before, int value)
{
    to[0] = before;
    to[1] = static_cast<char>('0' + value / 10);
    to[2] = static_cast<char>('0' + value % 10);
    return to + 3;
}

} // namespace

char* TLog::WriteSecond(char* to, std::int64_t second, bool isLocal) noexcept
{
    std::tm parts = {};
    time_t const time = second;
    if (isLocal) {
        ::localtime_r(&time, &parts);
    } else {
        ::gmtime_r(&time, &parts);
    }
    to = std::to_chars(to, to + kMaxTimeBytes, parts.tm_year + 1900).ptr;
    to = WriteTwoDigits(to, '-', parts.tm_mon + 1);
    to = WriteTwoDigits(to, '-', parts.tm_mday);
    to = WriteTwoDigits(to, 'T', parts.tm_hour);
    to = WriteTwoDigits(to, ':', parts.tm_min);
    return WriteTwoDigits(to, ':', parts.tm_sec);
}
