/// \file
/// Sets the locale of the C runtime for the encoding and the classes of characters (LC_CTYPE).
#pragma once

#include <clocale>
#include <string>

namespace test {

/// Sets a locale. The destructor restores the previous locale.
class LocaleSet {
public:
    explicit LocaleSet(const char* name) : m_before(std::setlocale(LC_CTYPE, nullptr)) {
        m_isSet = std::setlocale(LC_CTYPE, name) != nullptr;
    }
    ~LocaleSet() { std::setlocale(LC_CTYPE, m_before.c_str()); }

    LocaleSet(const LocaleSet&) = delete;
    LocaleSet& operator=(const LocaleSet&) = delete;

    /// Whether the runtime has the locale.
    [[nodiscard]] bool isSet() const { return m_isSet; }

private:
    std::string m_before;
    bool m_isSet;
};

}  // namespace test
