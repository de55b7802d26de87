/// \file
/// Regular expressions in the syntax of RE2: like the syntax of Perl, but without backreferences and lookaround. The
/// time of a search is always linear in the size of the text.
#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace re2 {
class RE2;
}

namespace vorellog {

class Pattern {
public:
    /// `^` and `$` match at the start and at the end of each line of a text.
    /// \throws tools::UsageError if the expression is invalid or too large.
    Pattern(std::string_view expression, bool ignoreCase);
    ~Pattern();

    Pattern(const Pattern&) = delete;
    Pattern& operator=(const Pattern&) = delete;

    [[nodiscard]] bool isIn(std::string_view text) const;

    /// A text that every match contains; empty if none is known. Most records do not contain this text, and a plain
    /// search detects this faster than the expression.
    [[nodiscard]] const std::string& requiredText() const noexcept { return m_requiredText; }

private:
    std::unique_ptr<re2::RE2> m_expression;
    std::string m_requiredText;
};

}  // namespace vorellog
