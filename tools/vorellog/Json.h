/// \file
/// JSON, written.
#pragma once

#include <string>
#include <string_view>

namespace vorellog {

/// Appends `text` as a JSON string, with U+FFFD for each byte that is not UTF-8. What a terminal might interpret
/// (tools::needsEscape) is escaped; a JSON reader gets the same text.
void appendJson(std::string& out, std::string_view text);

/// An object that is appended to a text member by member, from its beginning to the end of this one's life. Names have
/// nothing that needs to be escaped.
class JsonObject {
public:
    explicit JsonObject(std::string& out) : m_out(out) { m_out += '{'; }
    ~JsonObject() { m_out += '}'; }

    JsonObject(const JsonObject&) = delete;
    JsonObject& operator=(const JsonObject&) = delete;

    void add(std::string_view name, std::string_view value);
    void add(std::string_view name, unsigned long long value);

    /// Appends the name; the caller appends the value.
    void addName(std::string_view name);

private:
    std::string& m_out;
    bool m_isEmpty = true;
};

}  // namespace vorellog
