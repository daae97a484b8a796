/// Another time zone for the time of a test.

#pragma once

#include <stdlib.h>
#include <time.h>

/// Changes the zone of the process while it lives; behind it the system's holds. The zone is given
/// as the environment gives it.
class TimeZoneGuard
{
public:
    explicit TimeZoneGuard(char const* zone)
    {
        ::setenv("TZ", zone, 1);
        ::tzset();
    }
    TimeZoneGuard(TimeZoneGuard const&) = delete;
    TimeZoneGuard& operator=(TimeZoneGuard const&) = delete;
    ~TimeZoneGuard()
    {
        ::unsetenv("TZ");
        ::tzset();
    }
};
