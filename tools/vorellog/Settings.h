/// \file
/// The settings of vorellog, read from its command line.
#pragma once

#include <optional>
#include <string>

#include "support/CommandLine.h"
#include "vorellog/RecordFilter.h"

namespace vorellog {

enum class Colours { Auto, Always, Never };

struct Settings {
    std::wstring path{};  ///< of the log
    FilterChoices filter{};
    bool follow = false;
    bool fold = false;
    bool json = false;
    bool summary = false;
    Colours colours = Colours::Auto;
    std::optional<unsigned long long> maxEntries{};
};

/// Options, operand and help text of the command.
const tools::Syntax& syntax();

/// \param now the local time, for times such as "15m".
/// \throws tools::UsageError for invalid values and for options that exclude each other.
Settings settingsOf(const tools::Arguments& arguments, LocalMs now);

/// Whether the output gets colours. With Colours::Auto ("auto") it does on a capable console unless NO_COLOR is
/// set.
bool showsColours(Colours choice, bool isCapableConsole, bool hasNoColor) noexcept;

}  // namespace vorellog
