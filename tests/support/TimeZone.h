/// \file
/// Sets a time zone for the duration of a test: five hours ahead of UTC, without daylight saving time.
#pragma once

#include <cstdlib>
#include <ctime>
#include <string>

namespace test {

class TimeZone {
public:
    static constexpr long long kSecondsAhead = 5LL * 3600;

    TimeZone() {
        if (const char* const before = std::getenv("TZ")) {
            m_before = before;
        }
        set("ABC-5");
    }
    ~TimeZone() { set(m_before.c_str()); }

    TimeZone(const TimeZone&) = delete;
    TimeZone& operator=(const TimeZone&) = delete;

private:
    static void set(const char* zone) {
        _putenv_s("TZ", zone);
        _tzset();
    }

    std::string m_before;  ///< the previous value of TZ; if empty, the destructor removes the variable
};

}  // namespace test
