/// \file
/// Writes JSON.
#pragma once

#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

namespace vorellog {

/// Appends `text` as a JSON string, with U+FFFD for each byte that is not valid UTF-8. Characters that a terminal might
/// interpret (tools::needsEscape) are escaped. A JSON reader decodes the escapes.
void appendJson(std::string& out, std::string_view text);

/// Appends a JSON object to a text. The constructor opens the object, the destructor closes it. Names must not need
/// escaping.
class JsonObject {
public:
    explicit JsonObject(std::string& out) : m_out(out) { m_out += '{'; }
    ~JsonObject() { m_out += '}'; }

    JsonObject(const JsonObject&) = delete;
    JsonObject& operator=(const JsonObject&) = delete;

    /// Appends a name and a value.
    template <class Name>
    void add(const Name& name, std::string_view value) {
        addName(name);
        appendJson(m_out, value);
    }
    template <class Name>
    void add(const Name& name, unsigned long long value) {
        addName(name);
        appendNumber(value);
    }

    /// Appends a name; the caller appends the value.
    void addName(std::string_view name);

    /// Appends a name that is a literal. The compiler knows its size, so the name and the punctuation are appended in
    /// one step.
    template <std::size_t size>
    void addName(const char (&name)[size]) {
        char text[size + 3] = {',', '"'};
        std::memcpy(text + 2, name, size - 1);
        text[size + 1] = '"';
        text[size + 2] = ':';
        m_out.append(text + (m_isEmpty ? 1 : 0), size + 3 - (m_isEmpty ? 1 : 0));
        m_isEmpty = false;
    }

private:
    void appendNumber(unsigned long long value);

    std::string& m_out;
    bool m_isEmpty = true;
};

}  // namespace vorellog
