#include <cstdio>
#include <stdexcept>

#include <vorel/exceptions/Exception.h>

#include "Cases.h"

namespace bench {

namespace {

constexpr std::size_t kExceptions = 1000;

/// Creates an exception of the standard library as users do: the text is first rendered into a buffer.
std::uint64_t standardException(int number) {
    char text[256];
    std::snprintf(text, sizeof text, "cannot open %s: error %d", "settings.txt", number);
    const std::runtime_error e(text);
    return static_cast<unsigned char>(e.what()[0]);
}

template <class One>
Pass manyOf(One one) {
    return [one] {
        std::uint64_t sum = 0;
        for (std::size_t number = 0; number != kExceptions; ++number) {
            sum += one(static_cast<int>(number));
        }
        return sum;
    };
}

}  // namespace

void messages(Family& family) {
    vorel::Exception::SetErrorLogSize(0);  // switches the log off, so that only the exceptions are timed
    const std::vector<Peer> peers = {{"std::runtime_error + snprintf", manyOf(&standardException)}};
    family.compare("an exception with a narrow message", kExceptions, manyOf([](int number) -> std::uint64_t {
                       const vorel::Exception e("cannot open %s: error %d", "settings.txt", number);
                       return e.what()[0];
                   }),
                   peers);
    family.compare("an exception with a wide message", kExceptions, manyOf([](int number) -> std::uint64_t {
                       const vorel::Exception e(L"cannot open %ls: error %d", L"settings.txt", number);
                       return e.what()[0];
                   }),
                   peers);
}

}  // namespace bench
