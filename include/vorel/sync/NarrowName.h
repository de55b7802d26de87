/// \file
/// The wide form of a kernel object's name in UTF-8. Kernel objects have UTF-16 names.
#pragma once

#include "vorel/core/BaseString.h"
#include "vorel/text/Unicode.h"

namespace vorel::detail {

/// A name that is converted while a call lasts. Null stays null.
class NarrowName {
public:
    /// \throws Exception if `name` is not valid UTF-8; MemoryException.
    explicit NarrowName(const char* name) {
        if (name) {
            // The conversion reads up to five bytes after the lead byte of a truncated sequence.
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
