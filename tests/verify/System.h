/// \file
/// The system and the user that run the tests.
#pragma once

#include <string>

namespace verify {

/// The version of the system, such as "10.0.22631.4602", or under Wine "10.0.19043 (Wine 8.0)".
std::string windowsBuild();

/// The rights of the user, as a phrase for a sentence ("an ordinary user") and as part of a folder name ("user").
struct UserKind {
    const char* phrase;
    const wchar_t* folder;
};

UserKind userKind();

/// The processor, the code pages and the locale, one per line: "name: value".
std::string machineFacts();

}  // namespace verify
