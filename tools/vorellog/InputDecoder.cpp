#include "vorellog/InputDecoder.h"

#include <new>
#include <utility>
#include <vector>

#define ZLIB_CONST  // makes zlib declare the input of inflate() as const
#include <zlib.h>

#include "support/Text.h"
#include "support/Tool.h"

namespace vorellog {

namespace {

constexpr std::size_t kHeadBytes = 4;
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kLittleEndianMark = "\xFF\xFE";
constexpr std::string_view kBigEndianMark = "\xFE\xFF";
constexpr std::string_view kGzipMagic = "\x1F\x8B";

bool isLeadSurrogate(wchar_t unit) noexcept {
    return unit >= 0xD800 && unit <= 0xDBFF;
}

}  // namespace

Encoding encodingOf(std::string_view head) noexcept {
    const auto isAt = [head](std::size_t index, char c) { return head.size() > index && head[index] == c; };
    if (head.starts_with(kGzipMagic)) {
        return Encoding::Gzip;
    }
    // In UTF-16 without a byte-order mark, the "[" at the start of the first line shows the byte order.
    if (head.starts_with(kLittleEndianMark) || (isAt(0, '[') && isAt(1, '\0'))) {
        return Encoding::Utf16LittleEndian;
    }
    if (head.starts_with(kBigEndianMark) || (isAt(0, '\0') && isAt(1, '['))) {
        return Encoding::Utf16BigEndian;
    }
    return Encoding::Plain;
}

/// Decompresses gzip data, which consists of one or more members (compressed streams, each with a header).
class InputDecoder::Inflater {
public:
    Inflater(LogSink& sink, const std::wstring& name) : m_sink(sink), m_name(name), m_buffer(std::size_t{1} << 18) {
        constexpr int kGzipOnly = 16;
        if (inflateInit2(&m_stream, MAX_WBITS + kGzipOnly) != Z_OK) {
            throw std::bad_alloc();
        }
    }
    ~Inflater() { inflateEnd(&m_stream); }

    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;

    void add(std::string_view bytes) {
        m_stream.next_in = reinterpret_cast<const Bytef*>(bytes.data());
        m_stream.avail_in = static_cast<uInt>(bytes.size());
        while (m_stream.avail_in != 0 && !m_isPadding) {
            if (m_isAtEnd) {
                startMember();
                continue;
            }
            m_stream.next_out = reinterpret_cast<Bytef*>(m_buffer.data());
            m_stream.avail_out = static_cast<uInt>(m_buffer.size());
            const int result = inflate(&m_stream, Z_NO_FLUSH);
            const std::size_t size = m_buffer.size() - m_stream.avail_out;
            if (size != 0) {
                m_sink.bytes({m_buffer.data(), size});
            }
            if (result != Z_OK && result != Z_STREAM_END && result != Z_BUF_ERROR) {
                throw tools::Failure(m_name + L": the compressed data is damaged");
            }
            m_isAtEnd = result == Z_STREAM_END;
        }
    }

    [[nodiscard]] bool isAtEnd() const noexcept { return m_isAtEnd; }

private:
    /// Determines whether another member or padding follows the member that ended.
    void startMember() {
        m_isPadding = *m_stream.next_in != static_cast<Bytef>(kGzipMagic.front());
        if (!m_isPadding) {
            inflateReset(&m_stream);
            m_isAtEnd = false;
        }
    }

    LogSink& m_sink;
    const std::wstring& m_name;
    std::vector<char> m_buffer;
    z_stream m_stream{};
    bool m_isAtEnd = false;  ///< whether a member has ended, and no other member has started
    bool m_isPadding = false;
};

InputDecoder::InputDecoder(LogSink& sink, std::wstring name) : m_sink(sink), m_name(std::move(name)) {}

InputDecoder::~InputDecoder() = default;

void InputDecoder::bytes(std::string_view bytes) {
    if (m_isKnown) {
        decode(bytes);
        return;
    }
    m_head += bytes;
    if (m_head.size() >= kHeadBytes) {
        start();
    }
}

/// Determines the encoding, and decodes the bytes received so far.
void InputDecoder::start() {
    m_isKnown = true;
    m_encoding = encodingOf(m_head);
    std::string_view first = m_head;
    for (const std::string_view mark : {kUtf8Mark, kLittleEndianMark, kBigEndianMark}) {
        if (first.starts_with(mark)) {
            first.remove_prefix(mark.size());
            break;
        }
    }
    if (m_encoding == Encoding::Gzip) {
        m_inflater = std::make_unique<Inflater>(m_sink, m_name);
    }
    decode(first);
    m_head.clear();
}

void InputDecoder::decode(std::string_view bytes) {
    switch (m_encoding) {
    case Encoding::Gzip: m_inflater->add(bytes); return;
    case Encoding::Plain:
        if (!bytes.empty()) {
            m_sink.bytes(bytes);
        }
        return;
    default: decodeUtf16(bytes); return;
    }
}

void InputDecoder::decodeUtf16(std::string_view bytes) {
    m_rest += bytes;
    const bool isLittle = m_encoding == Encoding::Utf16LittleEndian;
    std::wstring units;
    units.reserve(m_rest.size() / 2);
    for (std::size_t at = 0; at + 1 < m_rest.size(); at += 2) {
        const auto first = static_cast<unsigned char>(m_rest[at]);
        const auto second = static_cast<unsigned char>(m_rest[at + 1]);
        units += static_cast<wchar_t>(isLittle ? first | second << 8 : second | first << 8);
    }
    if (!units.empty() && isLeadSurrogate(units.back())) {
        units.pop_back();
    }
    m_rest.erase(0, units.size() * 2);
    if (!units.empty()) {
        m_sink.bytes(tools::toUtf8(units));
    }
}

void InputDecoder::endOfFile() {
    if (!m_isKnown && !m_head.empty()) {
        start();
    }
    const bool isCut = m_inflater && !m_inflater->isAtEnd();
    if (!std::exchange(m_rest, {}).empty()) {
        m_sink.bytes("\xEF\xBF\xBD");  // U+FFFD for an incomplete character
    }
    stop();
    if (isCut) {
        throw tools::Failure(m_name + L": the compressed data ends early");
    }
}

void InputDecoder::stop() {
    m_head.clear();
    m_rest.clear();
    m_isKnown = false;
    m_encoding = Encoding::Plain;
    m_inflater.reset();
    m_sink.endOfFile();
}

}  // namespace vorellog
