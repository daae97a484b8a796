/// Another time zone for the time of a test.

#pragma once

#include <optional>
#include <string>

#include <stdlib.h>
#include <time.h>

/// Changes the zone of the process while it lives. The zone is given as the environment gives it.
class TimeZoneGuard
{
public:
    explicit TimeZoneGuard(char const* zone)
    {
        if (char const* const before = ::getenv("TZ")) {
            m_before = before;
        }
        Set(zone);
    }
    TimeZoneGuard(TimeZoneGuard const&) = delete;
    TimeZoneGuard& operator=(TimeZoneGuard const&) = delete;
    ~TimeZoneGuard() { Set(m_before ? m_before->c_str() : nullptr); }

private:
    static void Set(char const* zone)
    {
        zone != nullptr ? ::setenv("TZ", zone, 1) : ::unsetenv("TZ");
        ::tzset();
    }

    std::optional<std::string> m_before;
};
