#pragma once

// Bytes of picture files, whose numbers stand in either order.

#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>
#include <vector>

namespace lumiset::media {

using Bytes = std::vector<std::uint8_t>;
using ByteView = std::span<const std::uint8_t>;

inline bool startsWith(ByteView bytes, std::string_view text) {
    return bytes.size() >= text.size() && std::memcmp(bytes.data(), text.data(), text.size()) == 0;
}

inline std::uint32_t bigEndian(ByteView bytes, std::size_t at, std::size_t count) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < count; i++) {
        value = value << 8U | bytes[at + i];
    }
    return value;
}

inline std::uint32_t littleEndian(ByteView bytes, std::size_t at, std::size_t count) {
    std::uint32_t value = 0;
    for (std::size_t i = count; i-- > 0;) {
        value = value << 8U | bytes[at + i];
    }
    return value;
}

inline void putBigEndian(Bytes& bytes, std::uint32_t value, std::size_t count) {
    for (std::size_t i = count; i-- > 0;) {
        bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
    }
}

inline void putLittleEndian(Bytes& bytes, std::uint32_t value, std::size_t count) {
    for (std::size_t i = 0; i < count; i++) {
        bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
    }
}

}  // namespace lumiset::media
