#include "korcoreplatform/main/core/logging/TimeText_p.h"

#include <charconv>
#include <mutex>

#include <pthread.h>

namespace {

// The system keeps its time zone under a lock of its own. A child made by `fork` while another
// thread holds that would find it held for ever, so here no thread does meanwhile.
std::mutex s_zoneMutex;

extern "C" void LockZone()
{
    s_zoneMutex.lock();
}

extern "C" void UnlockZone()
{
    s_zoneMutex.unlock();
}

int const s_atFork = ::pthread_atfork(&LockZone, &UnlockZone, &UnlockZone);

char* WriteTwoDigits(char* to, char before, int value)
{
    to[0] = before;
    to[1] = static_cast<char>('0' + value / 10);
    to[2] = static_cast<char>('0' + value % 10);
    return to + 3;
}

} // namespace

std::tm TLog::LocalTime(std::time_t time) noexcept
{
    std::tm parts = {};
    std::lock_guard<std::mutex> const lock(s_zoneMutex);
    ::localtime_r(&time, &parts);
    return parts;
}

char* TLog::WriteSecond(char* to, std::int64_t second, bool isLocal) noexcept
{
    std::tm parts = {};
    std::time_t const time = second;
    if (isLocal) {
        parts = LocalTime(time);
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
