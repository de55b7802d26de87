/// \file
/// What vorellog is asked for, read from its command line.
#pragma once

#include <optional>
#include <string>

#include "support/CommandLine.h"
#include "vorellog/Filter.h"

namespace vorellog {

enum class Colours { WhenSeen, Always, Never };

struct Settings {
    std::wstring path{};  ///< of the log
    FilterChoices filter{};
    bool follow = false;
    bool fold = false;
    bool json = false;
    bool summary = false;
    Colours colours = Colours::WhenSeen;
    std::optional<unsigned long long> mostEntries{};
};

/// What the command line takes, with its help.
const tools::Syntax& syntax();

/// \param now the local time, for times like "15m".
/// \throws tools::WrongUse for a value that makes no sense, and for options that exclude each other.
Settings settingsOf(const tools::Arguments& arguments, LocalMs now);

/// Whether the output gets colours, with the choice "auto" only on a console that can show them and while NO_COLOR is
/// not set.
bool showsColours(Colours choice, bool isCapableConsole, bool hasNoColor) noexcept;

}  // namespace vorellog
