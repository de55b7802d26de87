/// \file
/// Converts the name of a kernel object from UTF-8 to UTF-16, because kernel objects have UTF-16 names.
#pragma once

#include "vorel/core/BaseString.h"
#include "vorel/text/Unicode.h"

namespace vorel::detail {

/// A name in UTF-16, for the duration of one call. `wide` returns null for a null name.
class NarrowName {
public:
    /// \throws Exception if a byte of `name` should start a sequence but cannot; other errors in UTF-8 are not detected
    ///         (see vorel/text/Unicode.h). MemoryException.
    explicit NarrowName(const char* name) {
        if (name) {
            // If the last sequence is truncated, the conversion reads up to five bytes after its lead byte. So zeros
            // are appended.
            BaseString<char> padded(name);
            padded.append("\0\0\0\0", 5);
            util::ConvertUTF8toString(m_wide, padded.c_str(), -1, true);
            m_isNull = false;
        }
    }

    [[nodiscard]] const wchar_t* wide() const noexcept { return m_isNull ? nullptr : m_wide.view().data(); }

private:
    BaseString<wchar_t> m_wide;
    bool m_isNull = true;
};

}  // namespace vorel::detail
