/// \file
/// Command lines: options and operands, taken apart by a table that also gives the help text.
///
///     constexpr Option kOptions[] = {{L"decode", L'd', {}, L"text to bytes"},
///                                    {L"output", L'o', L"file", L"write to this file"}};
///     constexpr Syntax kSyntax = {.command = L"vorelconv base64", .summary = L"bytes as Base64, and back",
///                                 .options = kOptions, .operands = L"[input]", .mostOperands = 1};
///     const Arguments arguments = parse(kSyntax, given);
///     if (arguments.has(L"help")) { … helpText(kSyntax) … }
///
/// `--name value`, `--name=value`, `-n value` and `-nvalue` are the same; switches may share a dash (`-dx`). A value is
/// taken as it stands, also when it begins with a dash. `--` ends the options. `-` and what looks like a negative
/// number are operands. Options and operands may stand in any order. Every command knows `--help` (`-h`).
#pragma once

#include <cstddef>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tools {

struct Option {
    std::wstring_view name;   ///< without its dashes
    wchar_t letter = 0;       ///< the short form; 0: none
    std::wstring_view value;  ///< what the value is called in the help; empty: a switch, which has none
    std::wstring_view help;
};

/// No limit to the number of operands.
constexpr std::size_t kAnyNumber = std::numeric_limits<std::size_t>::max();

/// What a command takes. Everything in it has to outlive the Syntax.
struct Syntax {
    std::wstring_view command;        ///< as it is typed: "vorelconv base64"
    std::wstring_view summary;        ///< one line, no full stop
    std::span<const Option> options;  ///< --help is one more
    std::wstring_view operands;       ///< as the help shows them: "[input]"
    std::size_t leastOperands = 0;
    std::size_t mostOperands = 0;
    std::wstring_view details;  ///< what else the help says, below the options; lines of at most 80 characters
};

/// A command line taken apart.
class Arguments {
public:
    /// Whether the option was given.
    /// \throws std::logic_error when the command has no such option, here and below.
    [[nodiscard]] bool has(std::wstring_view option) const;

    /// The value of the option, the last one if it was given more than once; nothing if it was not given.
    [[nodiscard]] std::optional<std::wstring> value(std::wstring_view option) const;

    /// All values of the option, in their order.
    [[nodiscard]] std::vector<std::wstring> values(std::wstring_view option) const;

    [[nodiscard]] const std::vector<std::wstring>& operands() const noexcept { return m_operands; }

private:
    friend class ArgumentParser;

    struct Given {
        const Option* option;
        std::wstring value;
    };

    [[nodiscard]] const Option* known(std::wstring_view name) const;

    std::span<const Option> m_options;
    std::vector<Given> m_given;
    std::vector<std::wstring> m_operands;
};

/// Takes `given` (the program's arguments without its own name) apart. With --help among them the number of operands
/// does not matter. The result refers to the syntax's options.
/// \throws WrongUse for an option that is not known, has no value or too much of one, and for too few or too many
///         operands.
Arguments parse(const Syntax& syntax, std::span<const std::wstring> given);

/// Summary, usage, options and details of a command.
std::wstring helpText(const Syntax& syntax);

/// Two columns, as the help has them: each row's first text, and behind the longest of them the second texts.
std::wstring columns(const std::vector<std::pair<std::wstring, std::wstring>>& rows);

}  // namespace tools
