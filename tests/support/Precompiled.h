/// \file
/// The precompiled header: the headers that most tests include. It is compiled once for most test programs that use the
/// DLL, and once for most test programs that link the static library. A few targets, such as the tests in core/,
/// compile it separately.
#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vorel/vorelCore.h>
