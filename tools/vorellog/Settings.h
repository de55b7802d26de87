/// \file
/// The settings of vorellog, read from its command line.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "support/CommandLine.h"
#include "vorellog/RecordFilter.h"

namespace vorellog {

enum class Colours { Auto, Always, Never };

struct Settings {
    std::vector<std::wstring> paths{};  ///< paths of the logs; "-" is standard input
    FilterChoices filter{};
    bool follow = false;
    bool fold = false;
    bool json = false;
    bool summary = false;
    std::wstring report{};  ///< the file of the HTML report; empty if there is none
    Colours colours = Colours::Auto;
    std::optional<unsigned long long> maxEntries{};
    std::optional<std::size_t> top{};   ///< maximum number of message groups, and of table rows, in a summary
    std::optional<std::size_t> tail{};  ///< shows only this many entries at the end of the log
    std::size_t context = 0;            ///< entries shown before and after each matching entry
};

/// Options, operand and help text of the command.
const tools::Syntax& syntax();

/// The operand that means standard input.
inline constexpr std::wstring_view kStandardInput = L"-";

/// The current time.
struct Now {
    LocalMs local = 0;  ///< in the zone of this computer
    LocalMs utc = 0;
};

/// \param now the time that texts such as "15m" refer to.
/// \throws tools::UsageError for invalid values and for invalid combinations of options.
Settings settingsOf(const tools::Arguments& arguments, const Now& now);

/// Whether the output has colours. With Colours::Auto, the output has colours if it is written to a console that can
/// show colours, and the variable NO_COLOR is not set.
bool showsColours(Colours choice, bool isCapableConsole, bool hasNoColor) noexcept;

}  // namespace vorellog
