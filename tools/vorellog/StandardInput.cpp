#include "vorellog/StandardInput.h"

#include <vector>

#include <windows.h>

#include "support/Console.h"
#include "support/Tool.h"

namespace vorellog {

void readStandardInput(InputDecoder& decoder, Viewer& viewer) {
    constexpr std::size_t kBlockBytes = std::size_t{1} << 18;
    std::vector<char> block(kBlockBytes);
    HANDLE const input = tools::streamHandle(tools::Stream::Input);
    while (!viewer.hasEnough()) {
        DWORD size = 0;
        if (!ReadFile(input, block.data(), static_cast<DWORD>(block.size()), &size, nullptr)) {
            const DWORD error = GetLastError();
            if (error != ERROR_BROKEN_PIPE && error != ERROR_HANDLE_EOF) {  // these two mean the end of a pipe or file
                throw tools::systemFailure(L"standard input", L"cannot be read", error);
            }
            size = 0;
        }
        if (size == 0) {
            decoder.endOfFile();
            return;
        }
        decoder.bytes({block.data(), size});
        viewer.showPending(static_cast<LocalMs>(GetTickCount64()));
    }
    decoder.stop();
}

}  // namespace vorellog
