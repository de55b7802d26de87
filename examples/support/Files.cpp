#include "Files.h"

#include <array>
#include <cstddef>
#include <cstdio>
#include <memory>

namespace examples {

namespace {

struct CloseFile {
    void operator()(std::FILE* file) const noexcept { (void)std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

}  // namespace

std::optional<std::string> readFile(const std::string& path) {
    const File file(std::fopen(path.c_str(), "rb"));
    if (!file) {
        return std::nullopt;
    }
    std::string content;
    std::array<char, 65536> block{};
    while (const std::size_t size = std::fread(block.data(), 1, block.size(), file.get())) {
        content.append(block.data(), size);
    }
    return content;
}

bool writeFile(const std::string& path, std::string_view content) {
    const File file(std::fopen(path.c_str(), "wb"));
    return file && std::fwrite(content.data(), 1, content.size(), file.get()) == content.size() &&
           std::fflush(file.get()) == 0;
}

std::vector<std::string> split(std::string_view text, std::string_view separator) {
    std::vector<std::string> pieces;
    while (!text.empty()) {
        const std::size_t end = text.find(separator);
        pieces.emplace_back(text.substr(0, end));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + separator.size());
    }
    return pieces;
}

}  // namespace examples
