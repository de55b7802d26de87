// A user's program. Checks that it catches an exception of the library, and that headers and library have the same
// version.

#include <cstdio>
#include <cstring>

#include <vorel/vorelCore.h>

int main() {
    const vorel::Array numbers{1, 2, 3};
    try {
        std::printf("%d\n", numbers[7]);
    } catch (const vorel::InvalidIndexException&) {
        return std::strcmp(vorel::version(), VOREL_VERSION_STRING) == 0 ? 0 : 1;
    }
    return 2;
}
