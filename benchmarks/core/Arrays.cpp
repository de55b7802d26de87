#include <string>
#include <vector>

#include "Cases.h"
#include "Widths.h"
#include "vorel/vorelCore.h"

namespace bench {

namespace {

using vorel::Array;
using vorel::BaseString;

template <class T>
void add(Array<T>& array, const T& item) {
    array.append(item);
}

template <class T>
void add(std::vector<T>& vector, const T& item) {
    vector.push_back(item);
}

template <class Container, class Item>
Pass fresh(std::size_t count, const Item& item) {
    return [count, &item] {
        Container container;
        for (std::size_t index = 0; index < count; ++index) {
            add(container, item);
        }
        return std::uint64_t{container.size()};
    };
}

template <class Container, class Item>
Pass reused(Container& container, std::size_t count, const Item& item) {
    return [&container, count, &item] {
        container.clear();
        for (std::size_t index = 0; index < count; ++index) {
            add(container, item);
        }
        return std::uint64_t{container.size()};
    };
}

void appendIntegers(Family& family) {
    static constexpr int kItem = 20261121;
    for (const std::size_t count : {std::size_t{30}, std::size_t{1000}, std::size_t{100000}, std::size_t{10000000}}) {
        const std::string name = "append of " + std::to_string(count) + " int";
        Array<int> ours;
        std::vector<int> standard;
        family.compare(name + ", fresh", count, fresh<Array<int>>(count, kItem),
                       {{"std::vector", fresh<std::vector<int>>(count, kItem)}});
        family.compare(name + ", reused", count, reused(ours, count, kItem),
                       {{"std::vector", reused(standard, count, kItem)}});
    }
}

template <class T>
void appendStrings(Family& family) {
    using Ours = BaseString<T>;
    using Standard = std::basic_string<T>;
    constexpr std::size_t kCount = 1000;
    for (const std::size_t units : {std::size_t{8}, std::size_t{24}}) {
        const std::string name = "append of 1000 strings of " + std::to_string(units);
        const Standard text(units, T{'x'});
        const Ours item(text.c_str());
        Array<Ours> ours;
        std::vector<Standard> standard;
        family.compare(named<T>(name + ", fresh"), kCount, fresh<Array<Ours>>(kCount, item),
                       {{"std::vector", fresh<std::vector<Standard>>(kCount, text)}});
        family.compare(named<T>(name + ", reused"), kCount, reused(ours, kCount, item),
                       {{"std::vector", reused(standard, kCount, text)}});
    }
}

}  // namespace

void fillArrays(Family& family) {
    appendIntegers(family);
    appendStrings<char>(family);
    appendStrings<wchar_t>(family);
}

}  // namespace bench
