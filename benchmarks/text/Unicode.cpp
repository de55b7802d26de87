#include <windows.h>

#include "BinaryTextAvx2.h"
#include "Cases.h"
#include "Transcoders.h"
#include "vorel/vorelCore.h"

namespace bench {

namespace {

using vorel::BaseString;
namespace util = vorel::util;

static_assert(sizeof(wchar_t) == sizeof(char16_t));

/// Composes a wide text that has a given number of bytes in UTF-8, or up to three more.
class Composer {
public:
    explicit Composer(std::size_t bytes) : m_wanted(bytes) {}

    [[nodiscard]] bool wantsMore() const { return m_bytes < m_wanted; }
    [[nodiscard]] std::wstring take() { return std::move(m_text); }

    /// A number from 0 to `limit` - 1.
    unsigned int below(unsigned int limit) { return static_cast<unsigned int>(m_random() % limit); }

    /// Appends a character, unless the text already has the wanted number of bytes.
    void put(unsigned int code) {
        if (!wantsMore()) {
            return;
        }
        if (code > 0xFFFF) {
            m_text += static_cast<wchar_t>(0xD7C0 + (code >> 10));
            m_text += static_cast<wchar_t>(0xDC00 + (code & 0x3FF));
        } else {
            m_text += static_cast<wchar_t>(code);
        }
        m_bytes += code > 0xFFFF ? 4u : code > 0x7FF ? 3u : code > 0x7F ? 2u : 1u;
    }
    void put(std::string_view ascii) {
        for (const char c : ascii) {
            put(static_cast<unsigned char>(c));
        }
    }
    /// Appends `fewest` to `most` random characters, each from `first` to `last`.
    void word(unsigned int first, unsigned int last, unsigned int fewest, unsigned int most) {
        for (unsigned int count = fewest + below(most - fewest + 1); count != 0; --count) {
            put(first + below(last - first + 1));
        }
    }
    void words(unsigned int first, unsigned int last, unsigned int count) {
        for (; count != 0; --count) {
            word(first, last, 2, 10);
            put(below(8) == 0 ? ", " : " ");
        }
    }

private:
    std::mt19937_64 m_random{20261121};
    std::wstring m_text;
    std::size_t m_wanted;
    std::size_t m_bytes = 0;
};

// Each of the following functions appends a short piece of text of one kind.

void putAscii(Composer& text) {
    text.words('a', 'z', 4);
}

void putJson(Composer& text) {
    text.put(R"({"id": )");
    text.word('0', '9', 3, 7);
    text.put(R"(, "name": ")");
    text.word('a', 'z', 3, 8);
    if (text.below(3) == 0) {
        text.put(0xE9);
    }
    text.put(R"(", "city": ")");
    text.word('a', 'z', 2, 8);
    if (text.below(4) == 0) {
        text.put(0xFC);
        text.word('a', 'z', 1, 6);
    }
    text.put(R"(", "price": )");
    text.word('0', '9', 2, 4);
    text.put(R"(, "tags": [")");
    text.word('a', 'z', 3, 8);
    text.put("\"]},\n");
}

void putCyrillicHtml(Composer& text) {
    text.put("<div class=\"");
    text.word('a', 'z', 4, 9);
    text.put("\"><a href=\"/");
    text.word('a', 'z', 4, 12);
    text.put("\">");
    text.words(0x430, 0x44F, 3);
    text.put("</a><p>");
    text.words(0x430, 0x44F, 5 + text.below(30));
    text.put("</p></div>\n");
}

void putGreek(Composer& text) {
    text.words(0x3B1, 0x3C9, 8);
}

void putChinese(Composer& text) {
    text.word(0x4E00, 0x9FFF, 6, 20);
    text.put(text.below(4) == 0 ? 0x3002 : 0xFF0C);
    if (text.below(6) == 0) {
        text.word('a', 'z', 3, 8);
    }
}

void putEmoji(Composer& text) {
    text.word(0x1F300, 0x1F5FF, 4, 40);
    text.put(" ");
}

void putTextWithEmoji(Composer& text) {
    text.words('a', 'z', 2 + text.below(8));
    text.word(0x1F300, 0x1F5FF, 1, 3);
}

struct Kind {
    const char* name;
    void (*put)(Composer& text);
};

constexpr Kind kKinds[] = {
    {"ASCII", putAscii}, {"JSON", putJson},   {"Cyrillic HTML", putCyrillicHtml},   {"Greek", putGreek},
    {"CJK", putChinese}, {"emoji", putEmoji}, {"text with emoji", putTextWithEmoji}};

constexpr std::size_t kSizes[] = {24, 256, 4096, 1 << 20, 16 << 20};

std::string nameOf(std::size_t size) {
    return size >= 1 << 20 ? std::to_string(size >> 20) + " MiB" : std::to_string(size) + " bytes";
}

constexpr char kLoop[] = "AVX2 loop";
constexpr char kNewLoop[] = "AVX2 loop, new string";

// Each peer has a separate output, because an output that two peers use would be in the caches more often.

void decode(Family& family, const std::string& name, const std::string& utf8) {
    const auto bytes = static_cast<int>(utf8.size());
    BaseString<wchar_t> wide;
    std::wstring ofSystem(utf8.size(), L'\0');
    std::u16string ofLoop(utf8.size() + 16, u'\0');
    std::vector<Peer> peers = {{"MultiByteToWideChar", [&] {
                                    return static_cast<std::uint64_t>(
                                        MultiByteToWideChar(CP_UTF8, 0, utf8.c_str(), bytes, ofSystem.data(),
                                                            static_cast<int>(ofSystem.size())));
                                }}};
    if (hasAvx2()) {
        peers.push_back({kLoop, [&] { return toUtf16Avx2(utf8.data(), utf8.size(), ofLoop.data()); }});
    }
    family.compare(
        "UTF-8 to wide, reused, " + name, 1,
        [&] {
            util::ConvertUTF8toString(wide, utf8.c_str(), bytes, true);
            return std::uint64_t{wide.data()[0]};
        },
        peers);
    if (!hasAvx2()) {
        return;  // the AVX2 loop is the only peer of the next case
    }
    family.compare("UTF-8 to wide, fresh, " + name, 1,
                   [&] {
                       BaseString<wchar_t> fresh;
                       util::ConvertUTF8toString(fresh, utf8.c_str(), bytes, true);
                       return std::uint64_t{fresh.data()[0]};
                   },
                   {{kNewLoop, [&] {
                         std::u16string fresh(utf16LengthAvx2(utf8.data(), utf8.size()), u'\0');
                         toUtf16Avx2(utf8.data(), utf8.size(), fresh.data());
                         return std::uint64_t{fresh[0]};
                     }}});
}

void encode(Family& family, const std::string& name, const std::wstring& text) {
    const auto units = static_cast<int>(text.size());
    const auto* const utf16 = reinterpret_cast<const char16_t*>(text.data());
    BaseString<char> narrow;
    std::string ofSystem(3 * text.size(), '\0');
    std::string ofLoop(4 * text.size() + 64, '\0');
    std::vector<Peer> peers = {{"WideCharToMultiByte", [&] {
                                    return static_cast<std::uint64_t>(
                                        WideCharToMultiByte(CP_UTF8, 0, text.c_str(), units, ofSystem.data(),
                                                            static_cast<int>(ofSystem.size()), nullptr, nullptr));
                                }}};
    if (hasAvx2()) {
        peers.push_back({kLoop, [&] { return toUtf8Avx2(utf16, text.size(), ofLoop.data()); }});
    }
    family.compare(
        "wide to UTF-8, reused, " + name, 1,
        [&] {
            util::ConvertStringtoUTF8(text.c_str(), narrow, units);
            return static_cast<std::uint64_t>(narrow.data()[0]);
        },
        peers);
    if (!hasAvx2()) {
        return;  // the AVX2 loop is the only peer of the next case
    }
    family.compare("wide to UTF-8, fresh, " + name, 1,
                   [&] {
                       BaseString<char> fresh;
                       util::ConvertStringtoUTF8(text.c_str(), fresh, units);
                       return static_cast<std::uint64_t>(fresh.data()[0]);
                   },
                   {{kNewLoop, [&] {
                         std::string fresh(utf8LengthAvx2(utf16, text.size()), '\0');
                         toUtf8Avx2(utf16, text.size(), fresh.data());
                         return static_cast<std::uint64_t>(fresh[0]);
                     }}});
}

}  // namespace

void unicode(Family& family) {
    for (const Kind& kind : kKinds) {
        for (const std::size_t size : kSizes) {
            Composer composer(size);
            while (composer.wantsMore()) {
                kind.put(composer);
            }
            const std::wstring text = composer.take();
            BaseString<char> utf8;
            util::ConvertStringtoUTF8(text.c_str(), utf8, static_cast<int>(text.size()));
            const std::string name = std::string(kind.name) + ", " + nameOf(size);
            decode(family, name, std::string(utf8.view()));
            encode(family, name, text);
        }
    }
}

}  // namespace bench
