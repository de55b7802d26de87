/// \file
/// Checks the messages of an exception and the lines of the log, which may be incomplete if an allocation failed.
#pragma once

#include <cstddef>
#include <string>

#include "allocation/Walker.h"
#include "vorel/exceptions/Exception.h"

constexpr std::size_t kLongMessage = 10000;
constexpr std::size_t kTruncatedMessage = 7999;  // in units; the internal buffer also has space for a terminator

/// The text that replaces a message if memory runs out while the message is converted to wide text.
inline const std::wstring kNoMemoryForText = L"Out of memory for text conversion";

/// Expects `text` as the message at `index` of `e`. If an allocation failed, the message may also be empty, truncated,
/// or `kNoMemoryForText`.
void expectMessage(const Attempt& attempt, const vorel::Exception& e, unsigned int index, const std::wstring& text);

/// Expects `prefix` and `text` as the last line of the log. If an allocation failed, the text may also be empty or
/// `kNoMemoryForText`. If an allocation failed and the text has more than `kTruncatedMessage` units, the line may also
/// be `prefix`, " Truncated: " and the truncated text, which may be empty.
void expectLastLine(const Attempt& attempt, const std::string& prefix, const std::string& text);
