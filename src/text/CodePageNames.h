/// \file
/// The table of code-page names.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vorel::text {

struct CodePageName {
    std::uint16_t codePage;
    std::uint16_t textStart;  ///< the position of the name in `CodePageNameTable::texts`

    /// The name, in upper case.
    [[nodiscard]] const char* name() const noexcept;
};

inline constexpr std::size_t kCodePageNameCount = 617;

/// The size of all names with their terminators, in bytes.
inline constexpr std::size_t kCodePageNameTextSize = 8939;

struct CodePageNameTable {
    CodePageName rows[kCodePageNameCount];
    char texts[kCodePageNameTextSize];
};

extern const CodePageNameTable kCodePageNameTable;

inline constexpr const CodePageName (&kCodePageNames)[kCodePageNameCount] = kCodePageNameTable.rows;

inline const char* CodePageName::name() const noexcept {
    return kCodePageNameTable.texts + textStart;
}

}  // namespace vorel::text
