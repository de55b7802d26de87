/// \file
/// The DLL must export exactly the names in vorelCore.exports. The build copies this list to the folder of the test
/// program.

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <cxxabi.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "exports/PeFile.h"

namespace {

using ::testing::IsEmpty;

using Names = std::set<std::string>;

/// The declaration that a mangled name encodes. A constructor has two mangled names with the same declaration.
std::string demangled(const std::string& name) {
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> text(abi::__cxa_demangle(name.c_str(), nullptr, nullptr, &status),
                                                           &std::free);
    return status == 0 ? text.get() : name;
}

Names exportedNames(const test::PeFile& dll) {
    Names names;
    for (const std::string& name : dll.exports()) {
        names.insert(name.starts_with("_Z") ? demangled(name) : name);
    }
    return names;
}

/// The list has the names of GCC's DLL. clang does not export type information, and programs do not need it, because
/// exception handlers compare the names of types. But clang exports constants that are initialised in their class.
Names listedNames(bool isLinkedByLld) {
    const std::string text = test::readFile(L"vorelCore.exports");
    Names names;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        const std::string name = text.substr(begin, end - begin);
        if (!isLinkedByLld || !name.starts_with("typeinfo for ")) {
            names.insert(name);
        }
        begin = end + 1;
    }
    if (isLinkedByLld) {
        names.insert({"vorel::Exception::MaxPathSize", "vorel::MemAllocInfo::kCounters"});
    }
    return names;
}

std::vector<std::string> difference(const Names& from, const Names& names) {
    std::vector<std::string> result;
    std::set_difference(from.begin(), from.end(), names.begin(), names.end(), std::back_inserter(result));
    return result;
}

TEST(Exports, AreTheNamesOfTheList) {
    const test::PeFile dll(L"vorelCore.dll");
    const Names found = exportedNames(dll);
    const Names listed = listedNames(dll.isLinkedByLld());
    EXPECT_GT(listed.size(), 400u);
    const char* const hint = "If this is intentional, run ./dev exports and commit the new list with the change.";
    EXPECT_THAT(difference(listed, found), IsEmpty()) << "listed names that are not exported. " << hint;
    EXPECT_THAT(difference(found, listed), IsEmpty()) << "exported names that are not listed. " << hint;
}

// These texts belong to a channel that writes nothing, so a test can find them only in the file.
TEST(Exports, TextsOfTheSilentTraceAreInTheFile) {
    const test::PeFile dll(L"vorelCore.dll");
    for (const char* const text : {"singleCToMultipleD() - ending text without 2nd double quote",
                                   "singleCToMultipleD() - non-delimitors after 2nd double quote"}) {
        EXPECT_NE(dll.bytes().find(text), std::string::npos) << text;
    }
}

}  // namespace
