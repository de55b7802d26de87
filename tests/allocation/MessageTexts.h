/// \file
/// What may have become of the texts of an exception when memory was refused on their way: onto its stack, and into the
/// log.
#pragma once

#include <cstddef>
#include <string>

#include "allocation/Walker.h"
#include "vorel/exceptions/Exception.h"

constexpr std::size_t kLongMessage = 10000;
constexpr std::size_t kCutMessage = 7999;  // what the buffer of a message holds

/// The text of a message that could not be made wide.
inline const std::wstring kNoMemoryForText = L"Out of memory for text conversion";

/// The message at `index` of `e` is `text`, or what is left of it where memory was refused.
void expectMessage(const Trial& trial, const vorel::Exception& e, unsigned int index, const std::wstring& text);

/// The last line of the log is `text` under `prefix`, or what is left of it where memory was refused.
void expectLastLine(const Trial& trial, const std::string& prefix, const std::string& text);
