#include "vorellog/Pattern.h"

#include <algorithm>

#include <re2/re2.h>
#include <re2/regexp.h>
#include <util/utf.h>

#include "support/Text.h"
#include "support/Tool.h"

namespace vorellog {

namespace {

std::string utf8Of(const int* codePoints, int count) {
    std::string text;
    for (int index = 0; index != count; ++index) {
        char bytes[re2::UTFmax];
        text.append(bytes, static_cast<std::size_t>(re2::runetochar(bytes, &codePoints[index])));
    }
    return text;
}

/// Returns why an expression is invalid, such as "missing )". The reason contains the invalid part of the expression,
/// unless the invalid part is the whole expression.
std::string_view reasonOf(const re2::RE2& expression) {
    constexpr std::size_t kColon = 2;
    std::string_view reason = expression.error();
    if (expression.error_arg() == expression.pattern()) {
        reason.remove_suffix(std::min(reason.size(), expression.error_arg().size() + kColon));
    }
    return reason;
}

/// Returns a text that every match of `expression` contains. Returns an empty text if the function finds no such text
/// in the structure of the expression.
std::string requiredTextOf(re2::Regexp& expression) {
    const bool ignoresCase = (expression.parse_flags() & re2::Regexp::FoldCase) != 0;
    switch (expression.op()) {
    case re2::kRegexpLiteral: {
        const int codePoint = expression.rune();
        return ignoresCase ? std::string() : utf8Of(&codePoint, 1);
    }
    case re2::kRegexpLiteralString:
        return ignoresCase ? std::string() : utf8Of(expression.runes(), expression.nrunes());
    case re2::kRegexpConcat: {
        std::string longest;
        for (int index = 0; index != expression.nsub(); ++index) {
            std::string each = requiredTextOf(*expression.sub()[index]);
            if (each.size() > longest.size()) {
                longest = std::move(each);
            }
        }
        return longest;
    }
    case re2::kRegexpRepeat:
        if (expression.min() == 0) {
            return {};
        }
        [[fallthrough]];
    case re2::kRegexpCapture:
    case re2::kRegexpPlus: return requiredTextOf(*expression.sub()[0]);
    default: return {};
    }
}

}  // namespace

Pattern::Pattern(std::string_view expression, bool ignoreCase) {
    re2::RE2::Options options;
    options.set_log_errors(false);
    options.set_case_sensitive(!ignoreCase);
    // The typed expression is first compiled alone. Within the group that is added below, an invalid expression such
    // as "a)(b" would close the group and so become valid.
    m_expression = std::make_unique<re2::RE2>(std::string(expression), options);
    if (m_expression->ok()) {
        m_expression = std::make_unique<re2::RE2>("(?m:" + std::string(expression) + ")", options);
    }
    if (!m_expression->ok()) {
        throw tools::UsageError(L"--regexp \"" + tools::fromUtf8(expression).value_or(L"?") + L"\": " +
                                tools::fromUtf8(reasonOf(*m_expression)).value_or(L"invalid expression"));
    }
    m_requiredText = requiredTextOf(*m_expression->Regexp());
}

Pattern::~Pattern() = default;

bool Pattern::isIn(std::string_view text) const {
    return text.find(m_requiredText) != std::string_view::npos &&
           re2::RE2::PartialMatch(re2::StringPiece(text.data(), text.size()), *m_expression);
}

}  // namespace vorellog
