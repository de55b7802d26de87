/// \file
/// Decodes files that are not plain UTF-8 before they are split into lines: gzip, UTF-16 in both byte orders
/// (PowerShell writes UTF-16 when it redirects output), and UTF-8 with a byte-order mark. The first bytes of a file
/// determine its encoding.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "vorellog/Follower.h"

namespace vorellog {

/// How the bytes of a file are encoded.
enum class Encoding { Plain, Gzip, Utf16LittleEndian, Utf16BigEndian };

/// The encoding of a file that begins with `head`. The first four bytes of the file are enough.
Encoding encodingOf(std::string_view head) noexcept;

class InputDecoder : public LogSink {
public:
    /// `sink` must outlive this object. Failure texts contain `name`.
    InputDecoder(LogSink& sink, std::wstring name);
    ~InputDecoder() override;

    InputDecoder(const InputDecoder&) = delete;
    InputDecoder& operator=(const InputDecoder&) = delete;

    /// \throws tools::Failure if compressed data is damaged.
    void bytes(std::string_view bytes) override;

    /// An incomplete character at the end of UTF-16 becomes U+FFFD.
    /// \throws tools::Failure if compressed data ends early. In that case, the sink has already received the text up to
    ///         there, and the end of the file. tools::Failure if a file of fewer than four bytes has damaged compressed
    ///         data.
    void endOfFile() override;

    /// Stops decoding a file whose rest is not needed. Drops incomplete data, and reports the end of the file to the
    /// sink.
    void stop();

    void gap() override { m_sink.gap(); }

    /// Declares that the next bytes are not the start of a file, and are plain UTF-8.
    void startWithin() { m_isKnown = true; }

private:
    class Inflater;

    void start();
    void decode(std::string_view bytes);
    void decodeUtf16(std::string_view bytes);

    LogSink& m_sink;
    std::wstring m_name;
    std::string m_head;  ///< the first bytes of a file, until the encoding is known
    bool m_isKnown = false;
    Encoding m_encoding = Encoding::Plain;
    std::unique_ptr<Inflater> m_inflater;
    std::string m_rest;  ///< an incomplete code unit or surrogate pair of UTF-16
};

}  // namespace vorellog
