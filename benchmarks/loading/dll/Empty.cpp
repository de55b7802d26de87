/// \file
/// A DLL with one function.

extern "C" __declspec(dllexport) int vorelBenchEmpty();

int vorelBenchEmpty() {
    return 0;
}
