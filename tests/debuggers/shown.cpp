// A program with objects of all kinds that have a debugger view. It is compiled with debug information and without
// optimisation. The test stops the program in stopHere().

#include <vorel/vorelCore.h>

namespace {

struct Plain {
    int number;
};

class OwnException : public vorel::Exception {
public:
    using vorel::Exception::Exception;
};

[[gnu::noinline]] void stopHere() {
    asm volatile("nop");
}

}  // namespace

int main() {
    vorel::Exception::SetErrorLogLocation("nul", vorel::Exception::DefaultLogSize);

    const vorel::BaseString<char> neverAllocated;
    const vorel::BaseString<wchar_t> neverAllocatedWide;
    const vorel::BaseString<char> narrow("say \"hi\"");
    const vorel::BaseString<wchar_t> wide(L"Gr\u00FC\u00DFe");
    const vorel::BaseString<char> withZero("a\0b", 3);
    vorel::BaseString<wchar_t> notCounted;
    notCounted.reserve(40, true)[0] = L'x';
    notCounted.data()[1] = L'\0';

    const vorel::Array<int> noNumbers;
    vorel::Array<int> numbers;
    numbers.append(4);
    numbers.append(9);
    vorel::Array<vorel::BaseString<wchar_t>> names;
    names.append(L"one");
    names.append(L"two");
    vorel::Array<Plain> plains;
    plains.append(Plain{7});

    int answer = 42;
    vorel::PointerStack<int> pointers;
    pointers.push(&answer);

    // The map has seven buckets, and the hashes 5 and 12 use the same bucket. The newer entry comes first.
    vorel::HashMap<int, vorel::BaseString<char>> map(7);
    map.put(5, 50, "five");
    map.put(12, 120, "twelve");
    map.put(1, 10, "one");
    const auto found = map.find(50, 5);
    const auto notFound = map.find(51, 5);
    const vorel::HashMap<int, int> noEntries;

    vorel::Exception exception(L"no entry named %ls", L"colour");
    exception.appendMessage(L"reading failed");
    exception.setLocation(1, L"Settings.cpp(12)");
    const vorel::InvalidIndexException derived(7, 0, 4);
    const vorel::Exception& byBase = derived;
    const OwnException own(L"of the program");
    const vorel::DiffException noMessage;

    stopHere();
    return byBase.getMessageTotal() == 1 && own.getMessageTotal() == 1 && found == notFound ? 1 : 0;
}
