/// \file
/// The command line of a child program: arguments of the form "name=value", in any order.
#pragma once

#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "support/WideText.h"

namespace test {

class ChildArguments {
public:
    ChildArguments(int count, char** arguments) : m_arguments(arguments + 1, arguments + count) {}

    /// The value of `name`; empty if the argument is missing.
    [[nodiscard]] std::string text(std::string_view name) const {
        for (const std::string& argument : m_arguments) {
            if (argument.starts_with(name) && argument.substr(name.size(), 1) == "=") {
                return argument.substr(name.size() + 1);
            }
        }
        return {};
    }

    /// The value of `name` as wide text; ASCII only.
    [[nodiscard]] std::wstring wide(std::string_view name) const { return widened(text(name)); }

    /// The value of `name` as a number; 0 if the argument is missing.
    [[nodiscard]] long long number(std::string_view name) const {
        return std::strtoll(text(name).c_str(), nullptr, 10);
    }

private:
    std::vector<std::string> m_arguments;
};

}  // namespace test
