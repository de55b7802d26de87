#include "support/CommandLine.h"

#include <algorithm>
#include <stdexcept>

#include "support/Tool.h"

namespace tools {

namespace {

constexpr Option kHelp = {L"help", L'h', {}, L"show this text"};

bool looksNegative(std::wstring_view argument) {
    return argument.size() > 1 && (argument[1] == L'.' || (argument[1] >= L'0' && argument[1] <= L'9'));
}

std::wstring quoted(std::wstring_view text) {
    return L'"' + std::wstring(text) + L'"';
}

/// The edit distance of `a` and `b`: the smallest number of steps that change `a` into `b`. A step inserts, removes or
/// replaces a character, or swaps two neighbours. Swapped characters are not edited again (Damerau, Levenshtein:
/// optimal string alignment).
std::size_t editDistance(std::wstring_view a, std::wstring_view b) {
    const std::size_t width = b.size() + 1;
    std::vector<std::size_t> costs((a.size() + 1) * width);
    for (std::size_t i = 0; i <= a.size(); ++i) {
        for (std::size_t j = 0; j <= b.size(); ++j) {
            std::size_t& cost = costs[i * width + j];
            if (i == 0 || j == 0) {
                cost = i + j;
                continue;
            }
            cost = std::min({costs[(i - 1) * width + j] + 1, costs[i * width + j - 1] + 1,
                             costs[(i - 1) * width + j - 1] + (a[i - 1] == b[j - 1] ? 0U : 1U)});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
                cost = std::min(cost, costs[(i - 2) * width + j - 2] + 1);
            }
        }
    }
    return costs.back();
}

std::wstring suggestion(std::wstring_view option) {
    return L"; did you mean --" + std::wstring(option) + L"?";
}

/// The option as in the help text, for example "-o, --output <file>".
std::wstring spelling(const Option& option) {
    std::wstring text = option.letter ? std::wstring{L'-', option.letter, L',', L' '} : std::wstring(4, L' ');
    text.append(L"--").append(option.name);
    if (!option.value.empty()) {
        text.append(L" <").append(option.value).append(L">");
    }
    return text;
}

}  // namespace

/// Parses one command line.
class ArgumentParser {
public:
    ArgumentParser(const Syntax& syntax, std::span<const std::wstring> given) : m_syntax(syntax), m_rest(given) {
        m_result.m_options = syntax.options;
    }

    Arguments parse() {
        while (!m_rest.empty()) {
            const std::wstring_view argument = next();
            if (argument == L"--") {
                m_result.m_operands.insert(m_result.m_operands.end(), m_rest.begin(), m_rest.end());
                break;
            }
            if (argument.starts_with(L"--")) {
                parseLong(argument.substr(2));
            } else if (argument.starts_with(L"-") && argument.size() > 1 && !looksNegative(argument)) {
                parseLetters(argument.substr(1));
            } else {
                m_result.m_operands.emplace_back(argument);
            }
        }
        if (!m_result.has(kHelp.name)) {
            checkOperands();
        }
        return std::move(m_result);
    }

private:
    [[noreturn]] void reject(std::wstring text) const { throw UsageError(std::move(text), m_syntax.command); }

    std::wstring_view next() {
        const std::wstring_view first = m_rest.front();
        m_rest = m_rest.subspan(1);
        return first;
    }

    template <class Matches>
    const Option* find(Matches&& matches) const {
        if (matches(kHelp)) {
            return &kHelp;
        }
        const auto found = std::find_if(m_syntax.options.begin(), m_syntax.options.end(), matches);
        return found == m_syntax.options.end() ? nullptr : &*found;
    }

    void parseLong(std::wstring_view text) {
        const std::size_t equals = text.find(L'=');
        const std::wstring_view name = text.substr(0, equals);
        const Option* const option = find([&](const Option& each) { return each.name == name; });
        if (!option) {
            reject(L"unknown option --" + std::wstring(name) + suggestionFor(name));
        }
        if (equals == std::wstring_view::npos) {
            add(*option, L"--" + std::wstring(name));
        } else if (option->value.empty()) {
            reject(L"option --" + std::wstring(name) + L" takes no value");
        } else {
            m_result.m_given.push_back({option, std::wstring(text.substr(equals + 1))});
        }
    }

    /// Returns "; did you mean --summary?" if `name` is a synonym of an option or similar to its name; otherwise an
    /// empty text.
    [[nodiscard]] std::wstring suggestionFor(std::wstring_view name) const {
        const auto found = std::find_if(m_syntax.synonyms.begin(), m_syntax.synonyms.end(),
                                        [&](const Synonym& each) { return each.typed == name; });
        if (found != m_syntax.synonyms.end()) {
            return suggestion(found->option);
        }
        constexpr std::size_t kMaxEdits = 2;
        std::wstring_view best;
        std::size_t least = std::min(kMaxEdits, (name.size() + 1) / 2) + 1;
        const auto consider = [&](const Option& option) {
            const std::size_t edits = editDistance(name, option.name);
            // If the user typed only the beginning of a name, the missing rest counts as one edit.
            const std::size_t cost = name.size() > 1 && option.name.starts_with(name) ? 1 : edits;
            if (cost < least) {
                least = cost;
                best = option.name;
            }
        };
        std::for_each(m_syntax.options.begin(), m_syntax.options.end(), consider);
        consider(kHelp);
        return best.empty() ? std::wstring() : suggestion(best);
    }

    void parseLetters(std::wstring_view letters) {
        while (!letters.empty()) {
            const wchar_t letter = letters.front();
            letters.remove_prefix(1);
            const Option* const option = find([&](const Option& each) { return each.letter == letter; });
            const std::wstring asGiven = {L'-', letter};
            if (!option) {
                reject(L"unknown option " + asGiven);
            }
            if (option->value.empty() || letters.empty()) {
                add(*option, asGiven);
            } else {
                m_result.m_given.push_back({option, std::wstring(letters)});
                return;
            }
        }
    }

    /// Adds a switch, or an option whose value is the next argument.
    void add(const Option& option, const std::wstring& asGiven) {
        if (option.value.empty()) {
            m_result.m_given.push_back({&option, {}});
            return;
        }
        if (m_rest.empty()) {
            reject(L"option " + asGiven + L" needs a value: <" + std::wstring(option.value) + L">");
        }
        m_result.m_given.push_back({&option, std::wstring(next())});
    }

    void checkOperands() const {
        const auto& operands = m_result.m_operands;
        if (operands.size() > m_syntax.maxOperands) {
            reject(L"unexpected argument " + quoted(operands[m_syntax.maxOperands]));
        }
        if (operands.size() < m_syntax.minOperands) {
            reject(L"too few arguments, expected: " + std::wstring(m_syntax.operands));
        }
    }

    const Syntax& m_syntax;
    std::span<const std::wstring> m_rest;
    Arguments m_result;
};

Arguments parse(const Syntax& syntax, std::span<const std::wstring> given) {
    return ArgumentParser(syntax, given).parse();
}

const Option* Arguments::known(std::wstring_view name) const {
    if (name == kHelp.name) {
        return &kHelp;
    }
    const auto found =
        std::find_if(m_options.begin(), m_options.end(), [&](const Option& each) { return each.name == name; });
    if (found == m_options.end()) {
        throw std::logic_error("unknown option name");
    }
    return &*found;
}

bool Arguments::has(std::wstring_view option) const {
    const Option* const asked = known(option);
    return std::any_of(m_given.begin(), m_given.end(), [&](const Given& each) { return each.option == asked; });
}

std::optional<std::wstring> Arguments::value(std::wstring_view option) const {
    std::vector<std::wstring> all = values(option);
    return all.empty() ? std::nullopt : std::optional(std::move(all.back()));
}

std::vector<std::wstring> Arguments::values(std::wstring_view option) const {
    const Option* const asked = known(option);
    std::vector<std::wstring> result;
    for (const Given& each : m_given) {
        if (each.option == asked) {
            result.push_back(each.value);
        }
    }
    return result;
}

std::wstring columns(const std::vector<std::pair<std::wstring, std::wstring>>& rows) {
    std::size_t widest = 0;
    for (const auto& row : rows) {
        widest = std::max(widest, row.first.size());
    }
    std::wstring text;
    for (const auto& [left, right] : rows) {
        text.append(L"  ").append(left).append(widest - left.size() + 2, L' ').append(right).append(L"\n");
    }
    return text;
}

std::wstring helpText(const Syntax& syntax) {
    std::vector<std::pair<std::wstring, std::wstring>> rows;
    for (const Option& option : syntax.options) {
        rows.emplace_back(spelling(option), option.help);
    }
    rows.emplace_back(spelling(kHelp), kHelp.help);

    std::wstring text(syntax.command);
    text.append(L": ").append(syntax.summary).append(L"\n\nUsage: ").append(syntax.command).append(L" [options]");
    if (!syntax.operands.empty()) {
        text.append(L" ").append(syntax.operands);
    }
    text += L"\n\nOptions:\n" + columns(rows);
    if (!syntax.details.empty()) {
        text.append(L"\n").append(syntax.details).append(L"\n");
    }
    return text;
}

}  // namespace tools
