#include <cstdio>
#include <vorel/vorelCore.h>

int main() {
    vorel::Exception::SetErrorLogLocation("hello.log", vorel::Exception::DefaultLogSize);
    vorel::Array<int> squares;
    for (int i = 0; i < 5; ++i) {
        squares.append(i * i);
    }
    try {
        std::printf("%d\n", squares[7]);
    } catch (vorel::Exception& e) {
        std::printf("%ls\n", e.what());
        e.catchClass(L"Hello", L"main");  // logs that the exception was caught, and removes its messages
    }
}
