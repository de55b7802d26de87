#include "vorellog/TailStart.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "vorellog/InputDecoder.h"
#include "vorellog/Viewer.h"

namespace vorellog {

namespace {

constexpr unsigned long long kFirstPartBytes = std::size_t{1} << 18;
constexpr unsigned int kGrowth = 4;  // factor by which the part of the log grows until it has enough entries
// With --fold, the part has at least this number of entries before the last `tail` entries, so that a trail that began
// before the part is rarely among the last entries (see TailStart.h).
constexpr unsigned long long kAdditionalEntries = 1000;

/// The position of the first line of `text` that begins with a header; npos if there is none. The text before the first
/// line feed is skipped, because it may be the end of a line.
std::size_t findFirstRecord(std::string_view text) noexcept {
    for (std::size_t feed = text.find('\n'); feed != std::string_view::npos; feed = text.find('\n', feed + 1)) {
        const std::string_view line = text.substr(feed + 1);
        if (parseHeader(line.substr(0, line.find('\n')))) {
            return feed + 1;
        }
    }
    return std::string_view::npos;
}

/// Counts the entries from `offset` to the end of `log` that match the filter.
unsigned long long countEntries(LogFile& log, unsigned long long offset, const Settings& settings) {
    constexpr std::size_t kBlockBytes = std::size_t{1} << 20;
    Settings counted;
    counted.filter = settings.filter;
    counted.fold = settings.fold;
    counted.tail = 1;  // the viewer then keeps the text of only one entry; all output is discarded
    Viewer viewer(counted, false, [](std::string_view) {});
    std::vector<char> block(kBlockBytes);
    while (const std::size_t size = log.read(offset, block.data(), block.size())) {
        viewer.bytes({block.data(), size});
        offset += size;
    }
    viewer.finish();
    return viewer.entries();
}

}  // namespace

std::optional<TailStart> findTailStart(LogFiles& files, const Settings& settings) {
    const std::unique_ptr<LogFile> log = files.open(LogFiles::Which::Log);
    if (!log || !settings.tail) {
        return std::nullopt;
    }
    std::string head(4, '\0');
    head.resize(log->read(0, head.data(), head.size()));
    const unsigned long long size = log->size();
    const unsigned long long wanted = *settings.tail + (settings.fold ? kAdditionalEntries : 0);
    if (encodingOf(head) != Encoding::Plain) {
        return std::nullopt;
    }
    for (unsigned long long part = kFirstPartBytes; part < size; part *= kGrowth) {
        std::string start(kFirstPartBytes, '\0');
        start.resize(log->read(size - part, start.data(), start.size()));
        const std::size_t record = findFirstRecord(start);
        if (record == std::string_view::npos) {
            continue;
        }
        const unsigned long long offset = size - part + record;
        if (countEntries(*log, offset, settings) >= wanted) {
            return TailStart{log->id(), offset};
        }
    }
    return std::nullopt;
}

}  // namespace vorellog
