/// \file
/// Decodes files that are not plain UTF-8, before they are split into lines: gzip, UTF-16 in both byte orders (which
/// PowerShell writes when it redirects output), and a byte-order mark before UTF-8. The first bytes of a file decide.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "vorellog/Follower.h"

namespace vorellog {

/// How the bytes of a file are encoded.
enum class Encoding { Plain, Gzip, Utf16LittleEndian, Utf16BigEndian };

/// The encoding of a file that begins with `head`, of which four bytes are enough.
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

    /// \throws tools::Failure if compressed data ends early; what it contains was delivered.
    void endOfFile() override;

    void gap() override { m_sink.gap(); }

    /// The next bytes do not begin a file: they are plain.
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
