/// \file
/// Writes JSON.
#pragma once

#include <string>
#include <string_view>

namespace vorellog {

/// Appends `text` as a JSON string, with U+FFFD for each byte that is not valid UTF-8. Characters that a terminal might
/// interpret (tools::needsEscape) are escaped; a JSON reader gets the original text.
void appendJson(std::string& out, std::string_view text);

/// Appends a JSON object to a text: the constructor opens it, the destructor closes it. Names must not need escaping.
class JsonObject {
public:
    explicit JsonObject(std::string& out) : m_out(out) { m_out += '{'; }
    ~JsonObject() { m_out += '}'; }

    JsonObject(const JsonObject&) = delete;
    JsonObject& operator=(const JsonObject&) = delete;

    void add(std::string_view name, std::string_view value);
    void add(std::string_view name, unsigned long long value);

    /// Appends a name; the caller appends the value.
    void addName(std::string_view name);

private:
    std::string& m_out;
    bool m_isEmpty = true;
};

}  // namespace vorellog
