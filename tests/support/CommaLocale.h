/// \file
/// Sets a locale with a decimal comma for the duration of a test, so that code that depends on the locale fails.
#pragma once

#include <clocale>
#include <string>
#include <string_view>

namespace test {

class CommaLocale {
public:
    CommaLocale() : m_before(std::setlocale(LC_ALL, nullptr)) {
        for (const char* const name : {"de-DE", "German_Germany", "fr-FR"}) {
            if (std::setlocale(LC_ALL, name) && std::string_view(std::localeconv()->decimal_point) == ",") {
                m_isSet = true;
                return;
            }
        }
    }
    ~CommaLocale() { std::setlocale(LC_ALL, m_before.c_str()); }

    CommaLocale(const CommaLocale&) = delete;
    CommaLocale& operator=(const CommaLocale&) = delete;

    /// Whether the system has such a locale.
    [[nodiscard]] bool isSet() const { return m_isSet; }

private:
    std::string m_before;
    bool m_isSet = false;
};

}  // namespace test
