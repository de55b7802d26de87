/// \file
/// Parses command lines. The parser and the help text use the same table of options.
///
///     constexpr Option kOptions[] = {{L"decode", L'd', {}, L"text to bytes"},
///                                    {L"output", L'o', L"file", L"write to this file"}};
///     constexpr Syntax kSyntax = {.command = L"vorelconv base64", .summary = L"bytes as Base64, and back",
///                                 .options = kOptions, .operands = L"[input]", .maxOperands = 1};
///     const Arguments arguments = parse(kSyntax, given);
///     if (arguments.has(L"help")) { … helpText(kSyntax) … }
///
/// The message for an unknown option `--name` suggests an option if `name` is listed as its synonym or similar to
/// its name.
///
/// `--name value`, `--name=value`, `-n value` and `-nvalue` are equivalent; switches may share a dash (`-dx`). A value
/// may begin with a dash. `--` ends the options. `-` and arguments that look like negative numbers are operands.
/// Options and operands may be in any order. Every command supports `--help` (`-h`).
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
    std::wstring_view value;  ///< name of the value in the help; empty for a switch, which has no value
    std::wstring_view help;
};

/// A name that users may type for an option. The parser rejects the name, with a message that suggests the option.
struct Synonym {
    std::wstring_view typed;   ///< without its dashes
    std::wstring_view option;  ///< the name of the option
};

/// No limit on the number of operands.
constexpr std::size_t kAnyNumber = std::numeric_limits<std::size_t>::max();

/// The syntax of a command. The texts and tables that it refers to must outlive it.
struct Syntax {
    std::wstring_view command;        ///< as typed: "vorelconv base64"
    std::wstring_view summary;        ///< one line, no full stop
    std::span<const Option> options;  ///< without --help, which every command has
    std::wstring_view operands;       ///< as shown in the help: "[input]"
    std::size_t minOperands = 0;
    std::size_t maxOperands = 0;
    std::wstring_view details;  ///< help text after the options, in lines of at most 90 characters
    std::span<const Synonym> synonyms{};
};

/// A parsed command line.
class Arguments {
public:
    /// Whether the option was given.
    /// \throws std::logic_error if the command has no such option. This applies to value() and values(), too.
    [[nodiscard]] bool has(std::wstring_view option) const;

    /// The last value of the option; nullopt if it was not given.
    [[nodiscard]] std::optional<std::wstring> value(std::wstring_view option) const;

    /// All values of the option, in the given order.
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

/// Parses `given`, the arguments of the program without its name. With --help, the number of operands is not checked.
/// The result refers to the options of `syntax`.
/// \throws UsageError for an unknown option, a missing or unexpected value, and for too few or too many operands.
Arguments parse(const Syntax& syntax, std::span<const std::wstring> given);

/// The help text of a command: summary, usage, options and details.
std::wstring helpText(const Syntax& syntax);

/// Formats rows in two columns, as in the help text.
std::wstring columns(const std::vector<std::pair<std::wstring, std::wstring>>& rows);

}  // namespace tools
