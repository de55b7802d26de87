#include "vorellog/RecordReader.h"

#include "support/Utf8.h"

namespace vorellog {

void RecordReader::add(const Line& line) {
    if (line.begins) {
        addLine(line.text);
    } else {
        extendLine(line.text);
    }
    if (line.end == LineEnd::File) {
        if (m_record.damage() != Damage::MidLine) {
            m_record.setDamage(Damage::Cut);
        }
        flush();
    }
}

void RecordReader::addLine(std::string_view line) {
    std::optional<LogHeader> header = parseHeader(line);
    bool isMidLine = false;
    for (std::size_t next = findNextHeader(line); next != std::string_view::npos; next = findNextHeader(line)) {
        start(line.substr(0, next), header, isMidLine ? Damage::MidLine : Damage::Cut);
        line.remove_prefix(next);
        header = parseHeader(line);
        isMidLine = true;
    }
    if (header) {
        start(line, header, isMidLine ? Damage::MidLine : Damage::None);
    } else if (m_isPending && (m_record.damage() == Damage::None || m_record.damage() == Damage::MidLine) &&
               m_record.text().size() + line.size() < kMaxRecordBytes) {
        m_record.addLine(line);
    } else {
        start(line, header, Damage::NoHeader);
    }
}

void RecordReader::extendLine(std::string_view piece) {
    if (m_isPending && m_record.text().size() + piece.size() < kMaxRecordBytes) {
        m_record.extendLine(piece);
    } else {
        start(piece, std::nullopt, Damage::NoHeader);
    }
}

void RecordReader::start(std::string_view text, const std::optional<LogHeader>& header, Damage damage) {
    flush();
    m_record.start(text, header, damage);
    m_isPending = true;
}

void RecordReader::flush() {
    if (!m_isPending) {
        return;
    }
    m_isPending = false;
    if (m_record.damage() == Damage::None && !tools::isUtf8(m_record.text())) {
        m_record.setDamage(Damage::BadUtf8);
    }
    m_deliver(m_record);
}

}  // namespace vorellog
