/// \file
/// The tables of a program file, as the page "PE Format" of the documentation of Windows describes them.
///
///     const test::PeFile dll(L"vorelCore.dll");
///     EXPECT_THAT(dll.imports(), Each(AllowedDll()));
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include <windows.h>

namespace test {

/// The bytes of a file in the folder of the test program.
/// \throws std::runtime_error if it cannot be opened.
std::string readFile(const std::wstring& name);

/// If the functions that read a table detect that the table is damaged, they throw a class derived from
/// `std::exception`, usually `std::runtime_error`.
class PeFile {
public:
    struct Section {
        std::string name;
        DWORD flags;  ///< IMAGE_SCN_…
        DWORD address;
        DWORD fileOffset;
        DWORD fileBytes;
    };

    /// Reads a file in the folder of the test program.
    /// \throws std::runtime_error if it cannot be opened or is not a 64-bit program file; a class derived from
    ///         `std::exception` if it is damaged.
    explicit PeFile(const std::wstring& name);

    [[nodiscard]] const std::string& bytes() const { return m_bytes; }
    [[nodiscard]] DWORD timestamp() const { return m_headers.FileHeader.TimeDateStamp; }
    [[nodiscard]] const IMAGE_OPTIONAL_HEADER64& header() const { return m_headers.OptionalHeader; }
    [[nodiscard]] const std::vector<Section>& sections() const { return m_sections; }

    /// Whether the linker of clang, lld, has written the file. lld writes the version number of a linker of Microsoft,
    /// which is 14 or more. The version numbers of GNU's linker are smaller.
    [[nodiscard]] bool isLinkedByLld() const { return header().MajorLinkerVersion >= 14; }

    /// The exported names, in the order of the table.
    [[nodiscard]] std::vector<std::string> exports() const;

    /// The names of the DLLs that the system loads together with this file.
    [[nodiscard]] std::vector<std::string> imports() const;

    /// The names in the symbol table of the linker. A stripped file has none.
    [[nodiscard]] std::vector<std::string> symbols() const;

private:
    template <class T>
    [[nodiscard]] T read(std::size_t offset) const;
    [[nodiscard]] std::size_t headers() const;
    [[nodiscard]] std::string textAt(std::size_t offset) const;
    [[nodiscard]] std::size_t offsetOf(DWORD address) const;
    [[nodiscard]] DWORD directory(unsigned int index) const { return header().DataDirectory[index].VirtualAddress; }
    /// The offset of the table of names that are longer than eight bytes.
    [[nodiscard]] std::size_t longNames() const;

    std::string m_bytes;
    IMAGE_NT_HEADERS64 m_headers;
    std::vector<Section> m_sections;
};

}  // namespace test
