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

/// What a mapping is asked to be.
struct MappingForm {
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

/// Whether what was just created, or opened in its place, was new.
bool wasNew() noexcept {
    return GetLastError() != ERROR_ALREADY_EXISTS;
}

/// Throws what `format` says of a path and of the last error.
[[noreturn]] void throwOf(const wchar_t* format, const wchar_t* path) {
    const int error = static_cast<int>(GetLastError());
    BaseString<wchar_t> message;
    throw Exception(format, path, util::FormatErrorMsg(error, message));
}

/// The long form of `path`; empty when the system has none.
std::wstring systemLongPath(const wchar_t* path) {
    std::wstring longPath;
    DWORD length = GetLongPathNameW(path, nullptr, 0);
    while (length > longPath.size()) {  // a size with the terminator, until the text fits: then without it
        longPath.resize(length);
        length = GetLongPathNameW(path, longPath.data(), length);
    }
    longPath.resize(length);
    return longPath;
}

/// The long form of the path of a file, which need not exist: one that does not has no long form of its own, and takes
/// that of its folder.
std::wstring longPathOf(const wchar_t* fileName) {
    constexpr const wchar_t* kFormat = L"ObtainAccessableFileMappingEx: Long API failed for %ls: %ls";
    std::wstring longPath = systemLongPath(fileName);
    if (!longPath.empty()) {
        return longPath;
    }
    if (GetLastError() != ERROR_FILE_NOT_FOUND) {
        throwOf(kFormat, fileName);
    }
    const std::wstring_view whole = fileName;
    const std::size_t folderSize = whole.find_last_of(L"\\/:") + 1;
    if (folderSize == 0) {
        return std::wstring(whole);
    }
    std::wstring path = systemLongPath(std::wstring(whole.substr(0, folderSize)).c_str());
    if (path.empty()) {
        throwOf(kFormat, fileName);
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

/// Maps the file, as often as it takes.
KernelHandle mapFile(const wchar_t* fileName, const MappingForm& form, SharedSecurity& security, bool& fileCreated,
                     bool& mappingCreated) {
    constexpr int kAttempts = 50;
    const std::wstring path = longPathOf(fileName);
    for (int attempts = 1;; ++attempts) {
        const KernelHandle file = openOrCreateFile(path.c_str(), security);
        if (!file) {
            throwOf(L"ObtainAccessableFileMappingEx: Unable to create file %ls: %ls", fileName);
        }
        fileCreated = wasNew();
        KernelHandle mapping = form.create(file.get(), security);
        mappingCreated = mapping && wasNew();
        const int error = static_cast<int>(GetLastError());  // of the creation, also where the open fails too
        if (!mapping && form.hasSize()) {
            // Another caller may have created it first. Its security allows everyone to open it, but not to create it
            // again: that would ask for the right to change its security.
            mapping = form.open();
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

KernelHandle openOrMapFile(const wchar_t* fileName, const MappingForm& form, bool& fileCreated, bool& mappingCreated) {
    fileCreated = false;
    mappingCreated = false;
    SharedSecurity security;
    if (!security.isComplete() && security.failedStep() == detail::kMakeSid) {
        return {};
    }
    if (!security.isComplete()) {
        throw Exception(L"ObtainAccessableFileMappingEx: Severe Error while opening %ls", fileName);
    }
    if (form.hasSize()) {
        if (KernelHandle existing = form.open()) {
            return existing;
        }
    }
    return mapFile(fileName, form, security, fileCreated, mappingCreated);
}

}  // namespace

void* ObtainAccessableFileMapping(void* file, unsigned long protection, unsigned long desiredAccess,
                                  unsigned long sizeHigh, unsigned long sizeLow, const wchar_t* name,
                                  int* created) noexcept {
    const MappingForm form{protection, desiredAccess, sizeHigh, sizeLow, name};
    KernelHandle mapping;
    bool isNew = false;
    SharedSecurity security;
    if (security.isComplete()) {
        mapping = form.create(file, security);
        isNew = mapping && wasNew();
        if (!mapping) {
            mapping = form.open();
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
    return detail::guarded(L"Accessable", L"ObtainAccessableFileMappingEx", [&] {
        const MappingForm form{protection, desiredAccess, sizeHigh, sizeLow, mappingName};
        try {
            bool unasked[2];
            return openOrMapFile(fileName, form, fileCreated ? *fileCreated : unasked[0],
                                 mappingCreated ? *mappingCreated : unasked[1])
                .release();
        } catch (const Exception&) {
            throw;
        } catch (...) {
            throw Exception(L"ObtainAccessableFileMappingEx: Severe Error while opening %ls", fileName);
        }
    });
}

}  // namespace vorel
