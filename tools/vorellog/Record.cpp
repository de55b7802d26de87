#include "vorellog/Record.h"

namespace vorellog {

std::string_view nameOf(Damage damage) noexcept {
    switch (damage) {
    case Damage::Cut: return "cut";
    case Damage::MidLine: return "mid-line";
    case Damage::NoHeader: return "no header";
    case Damage::BadUtf8: return "bad UTF-8";
    default: return {};
    }
}

void Record::start(std::string_view line, const std::optional<LogHeader>& header, Damage damage) {
    m_text.assign(line);
    m_header = header;
    m_damage = damage;
}

void Record::addLine(std::string_view line) {
    m_text += '\n';
    m_text += line;
}

std::string_view Record::host() const noexcept {
    return m_header ? std::string_view(m_text).substr(m_header->hostAt, m_header->hostSize) : std::string_view();
}

std::string_view Record::body() const noexcept {
    return std::string_view(m_text).substr(m_header ? m_header->bodyAt : 0);
}

LogBody Record::parsedBody() const noexcept {
    if (m_header) {
        return parseBody(body());
    }
    LogBody whole;
    whole.message = m_text;
    return whole;
}

}  // namespace vorellog
