// A user's program: headers and library have the same version, and an exception crosses the library.

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
