#include "support/Tool.h"

#include <new>

#include <windows.h>

#include "support/Console.h"
#include "support/Text.h"
#include "support/Visible.h"
#include "vorel/exceptions/Exception.h"
#include "vorel/system/ErrorText.h"

namespace tools {

namespace {

int runAndReport(std::wstring_view program, const std::function<int()>& body) {
    try {
        return body();
    } catch (const UsageError& e) {
        const std::wstring command = e.command().empty() ? std::wstring(program) : e.command();
        report(program, e.text() + L"\nTry \"" + command + L" --help\".");
        return kUsageError;
    } catch (const Failure& e) {
        report(program, e.text());
    } catch (const OutputClosed&) {
        return kFailed;
    } catch (const vorel::Exception& e) {
        report(program, e.what() ? e.what() : L"unknown error in vorelCore");
    } catch (const std::bad_alloc&) {
        report(program, L"not enough memory");
    } catch (const std::exception& e) {
        report(program, fromUtf8(e.what()).value_or(L"unknown failure"));
    }
    return kFailed;
}

}  // namespace

void report(std::wstring_view program, std::wstring_view text) noexcept {
    try {
        writeError(std::wstring(program) + L": " + visibleLines(text) + L"\n");
    } catch (...) {  // not enough memory for the text
        writeError(L"not enough memory\n");
    }
}

Failure systemFailure(std::wstring_view name, std::wstring_view what) {
    return systemFailure(name, what, GetLastError());
}

Failure systemFailure(std::wstring_view name, std::wstring_view what, unsigned long code) {
    vorel::BaseString<wchar_t> reason;
    vorel::util::FormatErrorMsg(static_cast<int>(code), reason);
    std::wstring text(name);
    text.append(L": ").append(what);
    if (!reason.empty()) {
        text.append(L": ").append(reason.view());
    }
    return Failure(text + L" (error " + std::to_wstring(code) + L")");
}

std::wstring versionText(std::wstring_view program) {
    return std::wstring(program) + L" " VOREL_TOOL_VERSION "\n";
}

int run(std::wstring_view program, const std::function<int()>& body) noexcept {
    try {
        vorel::Exception::SetErrorLogSize(0);
        return runAndReport(program, body);
    } catch (...) {  // the failure could not be reported
        return kFailed;
    }
}

}  // namespace tools
