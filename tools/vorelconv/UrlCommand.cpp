#include <algorithm>
#include <optional>
#include <utility>

#include "Command.h"
#include "Filter.h"
#include "support/Tool.h"
#include "vorel/text/Url.h"

namespace conv {

namespace {

using vorel::util::UrlComponent;
using NarrowString = vorel::BaseString<char>;

/// A zero-terminated copy of `text`.
/// \throws BadInput if the text contains a zero byte.
NarrowString terminated(std::string_view text) {
    const std::size_t zero = text.find('\0');
    if (zero != std::string_view::npos) {
        throw BadInput{zero, L"expected text, found a zero byte"};
    }
    return {text.data(), static_cast<unsigned int>(text.size())};
}

struct UrlRules {
    std::optional<UrlComponent> component;
    bool escapeReserved = false;
    bool spaceAsPlus = false;
};

/// Each byte is escaped separately, so a block may end anywhere.
class UrlEncoder final : public Filter {
public:
    explicit UrlEncoder(const UrlRules& rules) : m_rules(rules) {}

    std::size_t convert(std::string_view block, bool, std::string& result) override {
        const NarrowString text = terminated(block);
        if (m_rules.component) {
            vorel::util::urlEncodeComponent(text.c_str(), m_text, *m_rules.component);
        } else {
            vorel::util::urlEncode(text.c_str(), m_text, m_rules.escapeReserved, m_rules.spaceAsPlus);
        }
        result += m_text.view();
        return block.size();
    }

private:
    UrlRules m_rules;
    NarrowString m_text;
};

class UrlDecoder final : public Filter {
public:
    explicit UrlDecoder(bool plusAsSpace) : m_flags(plusAsSpace ? 1 : 0) {}

    std::size_t convert(std::string_view block, bool last, std::string& result) override {
        const std::size_t count = last ? block.size() : beforeTruncatedEscape(block);
        vorel::util::urlDecode(terminated(block.substr(0, count)).c_str(), m_text, m_flags);
        result += m_text.view();
        return count;
    }

private:
    /// If the block ends with an escape whose digits may be in the next block, returns the position of this escape.
    /// Otherwise returns the size of the block.
    static std::size_t beforeTruncatedEscape(std::string_view block) {
        const std::size_t tail = block.size() - std::min<std::size_t>(block.size(), 2);
        return std::min(block.find('%', tail), block.size());
    }

    int m_flags;
    NarrowString m_text;
};

constexpr tools::Option kComponentOption = {L"component", L'c', L"part",
                                            L"encode for this part of a URL: path, segment, query or parameter"};
constexpr tools::Option kReservedOption = {L"reserved", L'r', {}, L"also escape $ & + , / : ; = ? @"};
constexpr tools::Option kPlusOption = {L"plus", L'p', {}, L"encode a space as '+', or decode '+' as a space"};

UrlComponent componentOf(const std::wstring& name) {
    constexpr std::pair<std::wstring_view, UrlComponent> kComponents[] = {
        {L"path", vorel::util::UrlPath},
        {L"segment", vorel::util::UrlPathSegment},
        {L"query", vorel::util::UrlQuery},
        {L"parameter", vorel::util::UrlQueryParameter},
    };
    for (const auto& [each, component] : kComponents) {
        if (each == name) {
            return component;
        }
    }
    throw tools::UsageError(L"--component must be path, segment, query or parameter, not \"" + name + L"\"",
                            L"vorelconv url");
}

UrlRules rulesOf(const tools::Arguments& arguments) {
    UrlRules rules;
    rules.escapeReserved = arguments.has(kReservedOption.name);
    rules.spaceAsPlus = arguments.has(kPlusOption.name);
    if (const auto name = arguments.value(kComponentOption.name)) {
        rules.component = componentOf(*name);
        if (rules.escapeReserved || rules.spaceAsPlus) {
            throw tools::UsageError(L"--component cannot be combined with --reserved or --plus", L"vorelconv url");
        }
    }
    return rules;
}

int run(const tools::Arguments& arguments) {
    const UrlRules rules = rulesOf(arguments);
    if (arguments.has(kDecodeOption.name)) {
        if (rules.component || rules.escapeReserved) {
            throw tools::UsageError(L"--decode cannot be combined with --component or --reserved", L"vorelconv url");
        }
        UrlDecoder decoder(rules.spaceAsPlus);
        runFilter(arguments, decoder);
    } else {
        UrlEncoder encoder(rules);
        runFilter(arguments, encoder);
    }
    return tools::kDone;
}

constexpr tools::Option kOptions[] = {kDecodeOption, kComponentOption, kReservedOption,
                                      kPlusOption,   kTextOption,      kOutputOption};

constexpr Command kCommand = {
    .syntax = {.command = L"vorelconv url",
               .summary = L"encode or decode the percent escapes of URLs",
               .options = kOptions,
               .operands = kInputOperand,
               .maxOperands = 1,
               .details = L"Escapes the space, \" # % < > [ \\ ] ^ ` { | } ~, every byte from 0x80, and the\n"
                          L"characters that the options select. --component does not escape '~'. Control\n"
                          L"characters are never escaped, so line breaks remain. Decoding keeps a '%' that is\n"
                          L"not followed by two hexadecimal digits.\n"
                          L"\n"
                          L"  vorelconv url --text \"a/b c\"                   a/b%20c\n"
                          L"  vorelconv url -c parameter -t \"a=b&c d\"        a%3Db%26c+d\n"
                          L"  vorelconv url -d -p -t a%41+b                  aA b"},
    .run = run};

}  // namespace

const Command& urlCommand() {
    return kCommand;
}

}  // namespace conv
