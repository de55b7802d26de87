#include "exports/PeFile.h"

#include <cstddef>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <stdexcept>

#include "support/ChildProcess.h"

namespace test {

namespace {

constexpr std::size_t kShortNameBytes = 8;
// The size of a symbol in the file, the same as IMAGE_SIZEOF_SYMBOL.
constexpr std::size_t kSymbolBytes = 18;

}  // namespace

std::string readFile(const std::wstring& name) {
    const std::wstring path = programFolder() + name;
    std::FILE* const file = _wfopen(path.c_str(), L"rb");
    if (!file) {
        throw std::runtime_error("cannot open the file");
    }
    std::string bytes(std::filesystem::file_size(path), '\0');
    bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file));
    (void)std::fclose(file);
    return bytes;
}

template <class T>
T PeFile::read(std::size_t offset) const {
    if (offset + sizeof(T) > m_bytes.size()) {
        throw std::runtime_error("a table of the file is damaged");
    }
    T value;
    std::memcpy(&value, m_bytes.data() + offset, sizeof value);
    return value;
}

PeFile::PeFile(const std::wstring& name) : m_bytes(readFile(name)), m_headers(read<IMAGE_NT_HEADERS64>(headers())) {
    if (m_headers.Signature != IMAGE_NT_SIGNATURE || header().Magic != IMAGE_NT_OPTIONAL_HDR64_MAGIC) {
        throw std::runtime_error("not a 64-bit program file");
    }
    std::size_t at =
        headers() + offsetof(IMAGE_NT_HEADERS64, OptionalHeader) + m_headers.FileHeader.SizeOfOptionalHeader;
    for (WORD index = 0; index < m_headers.FileHeader.NumberOfSections; ++index, at += sizeof(IMAGE_SECTION_HEADER)) {
        const auto section = read<IMAGE_SECTION_HEADER>(at);
        std::string text(reinterpret_cast<const char*>(section.Name), kShortNameBytes);
        text.resize(std::strlen(text.c_str()));
        if (text.starts_with('/')) {
            text = textAt(longNames() + std::stoul(text.substr(1)));
        }
        m_sections.push_back({.name = text,
                              .flags = section.Characteristics,
                              .address = section.VirtualAddress,
                              .fileOffset = section.PointerToRawData,
                              .fileBytes = section.SizeOfRawData});
    }
}

std::size_t PeFile::headers() const {
    return static_cast<std::size_t>(read<IMAGE_DOS_HEADER>(0).e_lfanew);
}

std::string PeFile::textAt(std::size_t offset) const {
    const std::size_t end = m_bytes.find('\0', offset);
    if (end == std::string::npos) {
        throw std::runtime_error("a name of the file is damaged");
    }
    return m_bytes.substr(offset, end - offset);
}

std::size_t PeFile::offsetOf(DWORD address) const {
    for (const Section& section : m_sections) {
        if (address >= section.address && address - section.address < section.fileBytes) {
            return std::size_t{section.fileOffset} + (address - section.address);
        }
    }
    throw std::runtime_error("an address of the file is damaged");
}

std::size_t PeFile::longNames() const {
    return m_headers.FileHeader.PointerToSymbolTable + kSymbolBytes * m_headers.FileHeader.NumberOfSymbols;
}

std::vector<std::string> PeFile::exports() const {
    std::vector<std::string> names;
    if (const DWORD table = directory(IMAGE_DIRECTORY_ENTRY_EXPORT)) {
        const auto exported = read<IMAGE_EXPORT_DIRECTORY>(offsetOf(table));
        for (DWORD index = 0; index < exported.NumberOfNames; ++index) {
            const std::size_t entry = offsetOf(exported.AddressOfNames) + sizeof(DWORD) * index;
            names.push_back(textAt(offsetOf(read<DWORD>(entry))));
        }
    }
    return names;
}

std::vector<std::string> PeFile::imports() const {
    std::vector<std::string> names;
    if (const DWORD table = directory(IMAGE_DIRECTORY_ENTRY_IMPORT)) {
        for (std::size_t at = offsetOf(table);; at += sizeof(IMAGE_IMPORT_DESCRIPTOR)) {
            const auto imported = read<IMAGE_IMPORT_DESCRIPTOR>(at);
            if (imported.Name == 0) {
                break;
            }
            names.push_back(textAt(offsetOf(imported.Name)));
        }
    }
    return names;
}

std::vector<std::string> PeFile::symbols() const {
    std::vector<std::string> names;
    const IMAGE_FILE_HEADER& file = m_headers.FileHeader;
    for (DWORD index = 0; index < file.NumberOfSymbols; ++index) {
        const std::size_t at = file.PointerToSymbolTable + kSymbolBytes * index;
        if (read<DWORD>(at) == 0) {
            names.push_back(textAt(longNames() + read<DWORD>(at + sizeof(DWORD))));
        } else {
            std::string text = m_bytes.substr(at, kShortNameBytes);
            text.resize(std::strlen(text.c_str()));
            names.push_back(text);
        }
        index += static_cast<unsigned char>(m_bytes.at(at + kSymbolBytes - 1));  // skips auxiliary entries
    }
    return names;
}

}  // namespace test
