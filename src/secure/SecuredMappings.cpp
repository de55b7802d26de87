#include "vorel/secure/SecuredMappings.h"

#include <string>
#include <string_view>

#include <windows.h>

#include "secure/SharedSecurity.h"
#include "vorel/core/KernelHandle.h"
#include "vorel/core/Protocol.h"
#include "vorel/exceptions/Exception.h"
#include "vorel/system/ErrorText.h"

namespace vorel {

namespace {

using detail::KernelHandle;
using detail::SharedSecurity;

/// The properties of a requested mapping.
struct MappingKind {
    KernelHandle create(HANDLE file, SharedSecurity& security) const noexcept {
        SetLastError(ERROR_SUCCESS);
        return KernelHandle(CreateFileMappingW(file, security.attributes(), protection, sizeHigh, sizeLow, name));
    }
    [[nodiscard]] KernelHandle open() const noexcept {
        return KernelHandle(OpenFileMappingW(desiredAccess, FALSE, name));
    }
    [[nodiscard]] bool hasSize() const noexcept { return sizeHigh != 0 || sizeLow != 0; }

    unsigned long protection;
    unsigned long desiredAccess;
    unsigned long sizeHigh;
    unsigned long sizeLow;
    const wchar_t* name;
};

/// Whether the last call created a new object instead of opening an existing one.
bool wasNew() noexcept {
    return GetLastError() != ERROR_ALREADY_EXISTS;
}

/// Throws an `Exception` with `format`, the path and the system's text for the last error.
[[noreturn]] void throwLastError(const wchar_t* format, const wchar_t* path) {
    const int error = static_cast<int>(GetLastError());
    BaseString<wchar_t> message;
    throw Exception(format, path, util::FormatErrorMsg(error, message));
}

/// `path` with long names instead of short (8.3) names; empty if the system cannot convert the path.
std::wstring systemLongPath(const wchar_t* path) {
    std::wstring longPath;
    DWORD length = GetLongPathNameW(path, nullptr, 0);
    // If the buffer is too small, the result is the necessary size, which includes the terminator. Otherwise the result
    // is the length without the terminator.
    while (length > longPath.size()) {
        longPath.resize(length);
        length = GetLongPathNameW(path, longPath.data(), length);
    }
    longPath.resize(length);
    return longPath;
}

/// The path of a file with long names instead of short names. If the file does not exist, only its folder is converted.
std::wstring longPathOf(const wchar_t* fileName) {
    constexpr const wchar_t* kFormat = L"ObtainAccessableFileMappingEx: Long API failed for %ls: %ls";
    std::wstring longPath = systemLongPath(fileName);
    if (!longPath.empty()) {
        return longPath;
    }
    if (GetLastError() != ERROR_FILE_NOT_FOUND) {
        throwLastError(kFormat, fileName);
    }
    const std::wstring_view whole = fileName;
    const std::size_t folderSize = whole.find_last_of(L"\\/:") + 1;
    if (folderSize == 0) {
        return std::wstring(whole);
    }
    std::wstring path = systemLongPath(std::wstring(whole.substr(0, folderSize)).c_str());
    if (path.empty()) {
        throwLastError(kFormat, fileName);
    }
    return path.append(whole.substr(folderSize));
}

KernelHandle openOrCreateFile(const wchar_t* path, SharedSecurity& security) noexcept {
    SetLastError(ERROR_SUCCESS);
    const HANDLE file = CreateFileW(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                    security.attributes(), OPEN_ALWAYS, 0, nullptr);
    // cppcheck-suppress resourceLeak; the result owns it
    return KernelHandle(file == INVALID_HANDLE_VALUE ? nullptr : file);
}

/// Opens or creates the file and its mapping, in up to 50 attempts.
KernelHandle mapFile(const wchar_t* fileName, const MappingKind& kind, SharedSecurity& security, bool& fileCreated,
                     bool& mappingCreated) {
    constexpr int kAttempts = 50;
    const std::wstring path = longPathOf(fileName);
    for (int attempts = 1;; ++attempts) {
        const KernelHandle file = openOrCreateFile(path.c_str(), security);
        if (!file) {
            throwLastError(L"ObtainAccessableFileMappingEx: Unable to create file %ls: %ls", fileName);
        }
        fileCreated = wasNew();
        KernelHandle mapping = kind.create(file.get(), security);
        mappingCreated = mapping && wasNew();
        const int error = static_cast<int>(GetLastError());  // the creation's error, which opening could replace
        if (!mapping && kind.hasSize()) {
            // Another caller may have created the mapping first. Then CreateFileMappingW fails, because it also
            // requests the right to change the mapping's security. Opening the mapping does not request this right.
            mapping = kind.open();
        }
        if (mapping) {
            return mapping;
        }
        if (attempts == kAttempts) {
            BaseString<wchar_t> message;
            throw Exception(L"ObtainAccessableFileMappingEx: Opening file mapping failed for %ls after %i tries: %ls",
                            fileName, attempts, util::FormatErrorMsg(error, message));
        }
    }
}

KernelHandle openOrMapFile(const wchar_t* fileName, const MappingKind& kind, bool& fileCreated, bool& mappingCreated) {
    fileCreated = false;
    mappingCreated = false;
    SharedSecurity security;
    if (!security.isComplete() && security.failedStep() == detail::SecurityStep::MakeSid) {
        return {};
    }
    if (!security.isComplete()) {
        throw Exception(L"ObtainAccessableFileMappingEx: Severe Error while opening %ls", fileName);
    }
    if (kind.hasSize()) {
        if (KernelHandle existing = kind.open()) {
            return existing;
        }
    }
    return mapFile(fileName, kind, security, fileCreated, mappingCreated);
}

}  // namespace

void* ObtainAccessableFileMapping(void* file, unsigned long protection, unsigned long desiredAccess,
                                  unsigned long sizeHigh, unsigned long sizeLow, const wchar_t* name,
                                  int* created) noexcept {
    const MappingKind kind{protection, desiredAccess, sizeHigh, sizeLow, name};
    KernelHandle mapping;
    bool isNew = false;
    SharedSecurity security;
    if (security.isComplete()) {
        mapping = kind.create(file, security);
        isNew = mapping && wasNew();
        if (!mapping) {
            mapping = kind.open();
        }
    }
    if (created) {
        *created = isNew ? 1 : 0;
    }
    return mapping.release();
}

void* ObtainAccessableFileMappingEx(const wchar_t* fileName, unsigned long protection, unsigned long desiredAccess,
                                    unsigned long sizeHigh, unsigned long sizeLow, const wchar_t* mappingName,
                                    bool* fileCreated, bool* mappingCreated) {
    return detail::runRethrowing(L"Accessable", L"ObtainAccessableFileMappingEx", [&] {
        const MappingKind kind{protection, desiredAccess, sizeHigh, sizeLow, mappingName};
        try {
            bool unused[2];
            return openOrMapFile(fileName, kind, fileCreated ? *fileCreated : unused[0],
                                 mappingCreated ? *mappingCreated : unused[1])
                .release();
        } catch (const Exception&) {
            throw;
        } catch (...) {
            throw Exception(L"ObtainAccessableFileMappingEx: Severe Error while opening %ls", fileName);
        }
    });
}

}  // namespace vorel
