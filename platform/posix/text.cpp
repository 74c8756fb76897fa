// Wide characters are code points here, and 8-bit texts are UTF-8.

#include "platform/text.h"

#include <cstdint>

namespace lumiset::platform {
namespace {

constexpr bool isScalar(std::uint32_t code) {
    return code < 0xD800 || (code > 0xDFFF && code <= 0x10FFFF);
}

}  // namespace

std::optional<std::string> toUtf8(std::wstring_view text) {
    std::string bytes;
    for (const char32_t code : std::u32string(text.begin(), text.end())) {
        if (!isScalar(code)) {
            return std::nullopt;
        }
        const auto tail = [&](int shift) { bytes += static_cast<char>(0x80U | (code >> shift & 0x3FU)); };
        if (code < 0x80) {
            bytes += static_cast<char>(code);
        } else if (code < 0x800) {
            bytes += static_cast<char>(0xC0U | code >> 6);
            tail(0);
        } else if (code < 0x10000) {
            bytes += static_cast<char>(0xE0U | code >> 12);
            tail(6);
            tail(0);
        } else {
            bytes += static_cast<char>(0xF0U | code >> 18);
            tail(12);
            tail(6);
            tail(0);
        }
    }
    return bytes;
}

std::optional<std::string> toSystemText(std::wstring_view text) {
    return toUtf8(text);
}

std::optional<std::wstring> fromUtf8(std::string_view text) {
    std::wstring wide;
    for (std::size_t i = 0; i < text.size();) {
        const auto first = static_cast<std::uint8_t>(text[i++]);
        const std::size_t more = first < 0x80       ? 0
                                 : first >> 5 == 6  ? 1
                                 : first >> 4 == 14 ? 2
                                 : first >> 3 == 30 ? 3
                                                    : 4;
        if (more == 4 || text.size() - i < more) {
            return std::nullopt;
        }
        std::uint32_t code = more == 0 ? first : first & (0x3FU >> more);
        for (std::size_t k = 0; k < more; ++k) {
            const auto next = static_cast<std::uint8_t>(text[i++]);
            if (next >> 6 != 2) {
                return std::nullopt;
            }
            code = code << 6 | (next & 0x3FU);
        }
        constexpr std::uint32_t kSmallest[] = {0, 0x80, 0x800, 0x10000};
        if (code < kSmallest[more] || !isScalar(code)) {
            return std::nullopt;
        }
        wide += static_cast<wchar_t>(code);
    }
    return wide;
}

}  // namespace lumiset::platform
