#include "vorellog/MessageForm.h"

#include <algorithm>
#include <array>

namespace vorellog {

namespace {

enum Class : unsigned char { kOther, kSeparator, kDigit, kLetter, kHexLetter, kQuote, kSlash };

constexpr std::array<Class, 256> classTable() noexcept {
    std::array<Class, 256> table{};
    for (const char c : std::string_view(" \t\r\n\"'()[]{}<>|=,;*?")) {
        table[static_cast<unsigned char>(c)] = kSeparator;
    }
    for (unsigned char c = '0'; c <= '9'; ++c) {
        table[c] = kDigit;
    }
    for (unsigned char c = 'a'; c <= 'z'; ++c) {
        const Class kind = c <= 'f' ? kHexLetter : kLetter;
        table[c] = kind;
        table[c - ('a' - 'A')] = kind;
    }
    table[static_cast<unsigned char>('"')] = kQuote;
    table[static_cast<unsigned char>('\'')] = kQuote;
    table[static_cast<unsigned char>('\\')] = kSlash;
    table[static_cast<unsigned char>('/')] = kSlash;
    return table;
}

constexpr std::array<Class, 256> kClasses = classTable();

Class classOf(char c) noexcept {
    return kClasses[static_cast<unsigned char>(c)];
}

bool isWord(Class kind) noexcept {
    return kind == kDigit || kind == kLetter || kind == kHexLetter;
}

bool isHex(Class kind) noexcept {
    return kind == kDigit || kind == kHexLetter;
}

bool isSeparator(char c) noexcept {
    const Class kind = classOf(c);
    return kind == kSeparator || kind == kQuote;
}

/// The structure of a word that contains a digit.
struct WordShape {
    std::size_t digitRuns = 0;
    bool isHex = true;
    bool hasLetters = false;
};

WordShape shapeOf(std::string_view word) noexcept {
    WordShape shape;
    Class before = kOther;
    for (const char c : word) {
        const Class kind = classOf(c);
        shape.digitRuns += kind == kDigit && before != kDigit ? 1U : 0U;
        shape.isHex = shape.isHex && isHex(kind);
        shape.hasLetters = shape.hasLetters || kind != kDigit;
        before = kind;
    }
    return shape;
}

/// Whether `text` begins with the 36 characters of a GUID.
bool startsWithGuid(std::string_view text) noexcept {
    constexpr std::string_view kPattern = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";
    return text.size() >= kPattern.size() &&
           std::equal(kPattern.begin(), kPattern.end(), text.begin(),
                      [](char pattern, char c) { return pattern == 'x' ? isHex(classOf(c)) : c == pattern; });
}

/// Writes the form of one message. A token of the message is a part between two separators; quotes are separators, too.
class FormWriter {
public:
    FormWriter(std::string& out, std::string_view message) noexcept : m_out(out), m_text(message) {}

    void write() {
        std::size_t at = 0;
        while (at != m_text.size()) {
            const Class kind = classOf(m_text[at]);
            if (kind == kDigit || kind == kQuote || kind == kSlash) {
                copyTo(at);
                at = event(at, kind);
            } else {
                ++at;
            }
        }
        copyTo(at);
    }

private:
    /// Processes the character at `at` and returns the position of the next character to process. The form of the text
    /// before `at` must already be written.
    std::size_t event(std::size_t at, Class kind) {
        switch (kind) {
        case kDigit: return word(at);
        case kQuote: return quoted(at);
        default: return path(at);
        }
    }

    /// Copies the text up to `end` to the form. If a token starts in the copied text, stores where the last such token
    /// starts in the text and in the form.
    void copyTo(std::size_t end) {
        for (std::size_t at = end; at != m_done; --at) {
            if (isSeparator(m_text[at - 1])) {
                m_tokenAt = at;
                m_tokenOut = m_out.size() + (at - m_done);
                break;
            }
        }
        m_out.append(m_text.substr(m_done, end - m_done));
        m_done = end;
    }

    void replace(std::size_t end, std::string_view by) {
        m_out += by;
        m_done = end;
        m_replacedEnd = end;
    }

    [[nodiscard]] Class classAt(std::size_t at) const noexcept {
        return at < m_text.size() ? classOf(m_text[at]) : kOther;
    }

    /// Processes the word that has its first digit at `at`. The word may start directly after replaced text, such as
    /// "ms2" in "1.5ms2".
    std::size_t word(std::size_t at) {
        std::size_t start = at;
        while (start != m_replacedEnd && isWord(classAt(start - 1))) {
            --start;
        }
        std::size_t end = at;
        while (isWord(classAt(end))) {
            ++end;
        }
        const std::size_t before = at - start;  // number of letters before the digit, which are already written
        const std::string_view whole = m_text.substr(start, end - start);
        const WordShape shape = shapeOf(whole);
        constexpr std::size_t kMinHexSize = 4;
        if (guid(start, at)) {
            return m_done;
        }
        if ((shape.isHex && shape.hasLetters && whole.size() >= kMinHexSize) ||
            (whole.size() > 2 && whole[0] == '0' && (whole[1] | 0x20) == 'x')) {
            m_out.resize(m_out.size() - before);
            replace(end, "#");
        } else if (!shape.hasLetters) {
            removeSign(start);
            replace(endOfNumber(end), "#");
        } else if (shape.digitRuns == 1 && before != 0 && classOf(whole.back()) != kDigit) {
            copyTo(end);
        } else {
            writeRuns(at, end);
        }
        return m_done;
    }

    /// If the digit at `at` is the first digit of a GUID, replaces the whole GUID and returns true. The word that
    /// contains this digit starts at `group`. This word may be any of the five groups of a GUID.
    bool guid(std::size_t group, std::size_t at) {
        constexpr std::size_t kGuidSize = 36;
        for (const std::size_t offset : {0U, 9U, 14U, 19U, 24U}) {  // offsets of the groups in a GUID
            const std::size_t start = group - std::min<std::size_t>(group, offset);
            if (group - start == offset && startsWithGuid(m_text.substr(start)) &&
                m_out.ends_with(m_text.substr(start, at - start))) {
                m_out.resize(m_out.size() - (at - start));
                replace(start + kGuidSize, "#");
                return true;
            }
        }
        return false;
    }

    /// Removes the sign before the number at `start` from the form, if a token begins with this sign.
    void removeSign(std::size_t start) {
        if (start != 0 && (m_text[start - 1] == '-' || m_text[start - 1] == '+') &&
            (start == 1 || isSeparator(m_text[start - 2])) && m_out.ends_with(m_text[start - 1])) {
            m_out.pop_back();
        }
    }

    /// The end of the number whose first run of digits ends at `end`. A fraction, a number with thousands separators, a
    /// version and an IP address each count as one number.
    [[nodiscard]] std::size_t endOfNumber(std::size_t end) const noexcept {
        while ((end < m_text.size() && (m_text[end] == '.' || m_text[end] == ',')) && classAt(end + 1) == kDigit) {
            ++end;
            while (classAt(end) == kDigit) {
                ++end;
            }
        }
        return end;
    }

    /// Writes the word from `at` to `end` with each run of digits as "#".
    void writeRuns(std::size_t at, std::size_t end) {
        Class before = kOther;
        for (; at != end; ++at) {
            const Class kind = classOf(m_text[at]);
            if (kind != kDigit) {
                m_out += m_text[at];
            } else if (before != kDigit) {
                m_out += '#';
            }
            before = kind;
        }
        m_done = end;
    }

    /// Processes the quote at `at`. If a later quote closes the quoted text, the text is replaced by "...". Otherwise,
    /// only the quote is copied. In both cases, a token starts at the returned position. An apostrophe after a word
    /// character opens no quoted text, and an apostrophe before a word character closes none.
    std::size_t quoted(std::size_t at) {
        const char quote = m_text[at];
        const bool isApostrophe = quote == '\'';
        std::size_t close =
            at != 0 && isApostrophe && isWord(classAt(at - 1)) ? std::string_view::npos : m_text.find(quote, at + 1);
        while (isApostrophe && close != std::string_view::npos && isWord(classAt(close + 1))) {
            close = m_text.find(quote, close + 1);
        }
        if (close == std::string_view::npos) {
            copyTo(at + 1);
            return at + 1;
        }
        m_out += quote;
        m_out += "...";
        m_out += quote;
        m_done = close + 1;
        m_tokenAt = m_done;
        m_tokenOut = m_out.size();
        return m_done;
    }

    /// Processes the slash or backslash at `at`. A token is a path if it contains a backslash, if it is a URL, or if it
    /// begins like an absolute path. A slash or backslash at the end of a token does not make the token a path.
    std::size_t path(std::size_t at) {
        const std::size_t before = at - std::min(at, m_tokenAt);
        const bool begins = before == 0;
        const bool isUrl = before > 1 && m_text[at - 1] == ':' && at + 1 < m_text.size() && m_text[at + 1] == '/';
        const bool isDrive = before == 2 && m_text[at - 1] == ':' && !isUrl;
        const bool isPath = m_text[at] == '\\' || isUrl || isDrive || (begins && isWord(classAt(at + 1)));
        if (!isPath || at + 1 == m_text.size() || isSeparator(m_text[at + 1])) {
            copyTo(at + 1);
            return at + 1;
        }
        std::size_t end = at;
        while (end != m_text.size() &&
               (!isSeparator(m_text[end]) || (isUrl && m_text[end] == '?') || (isUrl && m_text[end] == '='))) {
            ++end;
        }
        while (end > at + 1 && std::string_view(".:!").find(m_text[end - 1]) != std::string_view::npos) {
            --end;
        }
        m_out.resize(m_tokenOut);
        replace(end, "<path>");
        return end;
    }

    std::string& m_out;
    std::string_view m_text;
    std::size_t m_done = 0;                 ///< the form of the text before this position is written
    std::size_t m_replacedEnd = 0;          ///< end of the last number, id or path that was replaced
    std::size_t m_tokenAt = 0;              ///< start of the current token in the text
    std::size_t m_tokenOut = m_out.size();  ///< start of the current token in the form
};

}  // namespace

void appendForm(std::string& out, std::string_view message) {
    if (message.size() <= kMaxFormInput) {
        FormWriter(out, message).write();
        return;
    }
    FormWriter(out, message.substr(0, wholeCharacters(message, kMaxFormInput))).write();
    out += "...";
}

}  // namespace vorellog
