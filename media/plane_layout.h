#pragma once

#include <optional>

#include "media/av.h"

namespace lumiset::media {

enum class Family { kGrey, kRgb, kYuv };
enum class SampleType { kByte, kWord, kFloat };

constexpr int bytesOf(SampleType type) {
    return type == SampleType::kByte ? 1 : type == SampleType::kWord ? 2 : 4;
}

/// Where a pixel format keeps its samples.
struct PlaneLayout {
    /// One channel, in the order R, G, B, A or Y, U, V, A; grey uses the first and the last.
    struct Channel {
        int plane = -1;  ///< of the frame; -1: the format has no such channel
        int step = 0;    ///< bytes from sample to sample
        int offset = 0;  ///< bytes before the first one
        int shift = 0;   ///< bits below the least significant one
    };
    Channel channels[4];
    Family family = Family::kRgb;
    SampleType type = SampleType::kByte;
    int depth = 8;  ///< bits of a sample
    int log2ChromaW = 0;
    int log2ChromaH = 0;
    bool swapped = false;  ///< the bytes of a word stand in the other order
    bool planar = false;   ///< every channel is a plane of its own, its samples as the processor reads them
    bool mingled = false;  ///< two channels share a byte

    bool hasAlpha() const { return channels[3].plane >= 0; }
    bool isChroma(int channel) const { return family == Family::kYuv && (channel == 1 || channel == 2); }
};

/// Nothing for formats of samples that stand in no whole bytes, of unequal depths, palettes, Bayer patterns and XYZ.
std::optional<PlaneLayout> planeLayout(AVPixelFormat format);

/// A frame, or one field of it, with its samples.
struct FrameView {
    const AVFrame* frame;
    const PlaneLayout* layout;
    int field;  ///< 0 the field of the top row, 1 the other, -1 the whole frame

    int width() const { return frame->width; }
    int height() const { return rowsOfView(frame->height); }
    /// Size of a channel's plane.
    int width(int channel) const;
    int height(int channel) const;
    std::ptrdiff_t stride(int channel) const;
    std::uint8_t* row(int channel, int y) const;

private:
    int rowsOfView(int rows) const { return field < 0 ? rows : (rows + 1 - field) / 2; }
};

/// Copies samples `begin` to `end` of a channel's row to `target`, whose first sample is number 0, as the processor
/// reads them. Rows and samples beyond the frame repeat its last ones.
void fetchSamples(const FrameView& from, int channel, int row, int begin, int end, void* target);
/// The way back. Samples beyond the frame are left out.
void storeSamples(const void* source, int begin, int end, const FrameView& to, int channel, int row);

}  // namespace lumiset::media
