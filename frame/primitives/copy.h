#pragma once

// Copies of whole pixels and moves of single channels. Every function answers `kImgNullPointer`, `kImgBadSize` or
// `kImgBadStep` for such arguments and has then written nothing. Steps are in bytes. Except where said, source
// and destination are either one plane or do not overlap.
//
// The `A4` functions and the channel functions may be given pointers advanced by some samples. They never read
// or write past the last sample that they work on. Within a row they may store the skipped samples back with
// the values that they had.

#include <cstdint>

#include "frame/primitives/status.h"

namespace lumiset {

/// Whole pixels. Rows of source and destination may overlap each other.
ImgStatus ImgCopy8C1(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                     ImgSize size) noexcept;
ImgStatus ImgCopy8C4(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                     ImgSize size) noexcept;
ImgStatus ImgCopyFC1(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep, ImgSize size) noexcept;
ImgStatus ImgCopyFC4(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep, ImgSize size) noexcept;

/// The first three samples of each pixel; the fourth of `dst` stays.
ImgStatus ImgCopy8A4(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                     ImgSize size) noexcept;
ImgStatus ImgCopyFA4(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep, ImgSize size) noexcept;

/// The sample that `src` points at, of each four-sample pixel, to the one that `dst` points at. The two may be
/// different samples of one plane.
ImgStatus ImgCopyChannel8C4(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                            ImgSize size) noexcept;
ImgStatus ImgCopyChannelFC4(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                            ImgSize size) noexcept;

/// The sample that `src` points at, of each four-sample pixel, to a one-channel plane.
ImgStatus ImgExtractChannel8(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                             ImgSize size) noexcept;
ImgStatus ImgExtractChannelF(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                             ImgSize size) noexcept;

/// A one-channel plane to the sample that `dst` points at, of each four-sample pixel.
ImgStatus ImgInsertChannel8(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                            ImgSize size) noexcept;
ImgStatus ImgInsertChannelF(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                            ImgSize size) noexcept;

/// In place: new sample i is old sample `order[i]`. `kImgBadRange` for an index above 3.
ImgStatus ImgSwapChannels8C4(std::uint8_t* plane, std::int32_t step, const std::uint32_t* order, ImgSize size) noexcept;
ImgStatus ImgSwapChannelsFC4(float* plane, std::int32_t step, const std::uint32_t* order, ImgSize size) noexcept;

/// The same from plane to plane.
ImgStatus ImgReorderChannels8C4(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                                const std::uint32_t* order, ImgSize size) noexcept;
ImgStatus ImgReorderChannelsFC4(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                                const std::uint32_t* order, ImgSize size) noexcept;

}  // namespace lumiset
