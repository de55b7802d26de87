#include "vorellog/LineSplitter.h"

#include <algorithm>

namespace vorellog {

void LineSplitter::add(std::string_view bytes) {
    while (!bytes.empty()) {
        const std::size_t end = bytes.find('\n');
        if (end == std::string_view::npos) {
            keep(bytes);
            return;
        }
        if (m_rest.empty() && end <= kMaxPieceBytes) {
            deliver(bytes.substr(0, end), LineEnd::Feed);
        } else {
            keep(bytes.substr(0, end));
            deliver(m_rest, LineEnd::Feed);
            m_rest.clear();
        }
        bytes.remove_prefix(end + 1);
    }
}

void LineSplitter::endOfFile() {
    if (isWithinLine()) {
        deliver(m_rest, LineEnd::File);
    }
    m_rest.clear();
}

void LineSplitter::deliver(std::string_view text, LineEnd end) {
    while (end == LineEnd::Feed && text.ends_with('\r')) {
        text.remove_suffix(1);
    }
    const bool begins = !m_withinPieces;
    m_withinPieces = end == LineEnd::MoreText;
    m_deliver({text, end, begins});
}

void LineSplitter::keep(std::string_view bytes) {
    while (m_rest.size() + bytes.size() > kMaxPieceBytes) {
        const std::size_t taken = kMaxPieceBytes - m_rest.size();
        m_rest.append(bytes.substr(0, taken));
        bytes.remove_prefix(taken);
        deliver(m_rest, LineEnd::MoreText);
        m_rest.clear();
    }
    m_rest.append(bytes);
}

}  // namespace vorellog
