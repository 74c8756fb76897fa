#pragma once

// Rows between planes and pictures' interleaved samples, as vector loops.

#include <cstdint>

namespace lumiset::media {

/// Planes' rows of R, G, B, A to pixels of B, G, R, A. Without alpha (null) the pixels are opaque; float samples are
/// limited to 0..1, NaN becoming 0.
void packPixels(const std::uint8_t* const planes[4], int count, std::uint8_t* pixels);
void packPixels(const float* const planes[4], int count, float* pixels);

/// The way back. Where there is no plane for alpha (null) the colours are laid over black: colour times alpha.
void splitPixels(const std::uint8_t* pixels, int count, std::uint8_t* const planes[4]);
void splitPixels(const float* pixels, int count, float* const planes[4]);

/// How pixels of three or four bytes become others: byte `source[i]` of the one is byte i of the other. A number beyond
/// the source's bytes stands for 255.
struct ByteOrder {
    int sourceBytes;
    int targetBytes;
    std::uint8_t source[4];
    bool overBlack;  ///< colours are multiplied by alpha, which is byte 3 of the source
};
void reorderPixels(const std::uint8_t* from, int count, const ByteOrder& order, std::uint8_t* to);

}  // namespace lumiset::media
