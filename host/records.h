#pragma once

// The records that cross the boundary. Widths and order are a binary contract: offsets are checked below
// where pointers have four bytes; elsewhere the same declarations apply with the platform's pointer width.

#include <cstddef>
#include <cstdint>

#include "host/unknown.h"

namespace lumiset {

enum ParamType : std::uint32_t {
    kParamPoint = 0,    ///< two floats, 0..1 of the frame, y down
    kParamChoice = 1,   ///< index of a list item
    kParamSlider = 2,   ///< float 0..1, whatever range the panel shows
    kParamColor = 3,    ///< packed 0x00BBGGRR
    kParamBoolean = 4,  ///< lowest byte 0 or nonzero
    kParamGroup = 5,    ///< opens or closes a group box; has no value
};

/// A parameter's value; the `ParamType` tells which member counts. Two 32-bit words.
union ParamValue {
    struct Point {
        float x;
        float y;
    } point;
    std::uint32_t choice;
    float slider;
    std::uint32_t color;
    std::uint8_t boolean;
    std::uint32_t words[2];
};

/// Place of a control on the effect's panel, in panel pixels. A width or height of 0: no explicit size.
struct PanelRect {
    std::int32_t x;
    std::int32_t y;
    std::int32_t width;
    std::int32_t height;
};

inline constexpr std::size_t kMaxChoiceItems = 10;
inline constexpr std::size_t kChoiceLabelSize = 20;
inline constexpr std::size_t kParamLabelSize = 40;

/// Description of one parameter, filled by `IVideoEffect::GetParamInfo`.
struct ParamInfo {
    struct SliderRange {
        float maximum;               ///< upper bound that the panel shows
        std::uint32_t showDecimals;  ///< 0: the panel shows whole numbers
    };

    ParamValue defaultValue;
    std::uint32_t type;  ///< a `ParamType`
    union {
        float minimum;            ///< sliders: lower bound that the panel shows
        std::uint32_t itemCount;  ///< choices: number of items
        std::uint8_t groupEnd;    ///< groups: 0 opens, 1 closes
    };
    union {
        SliderRange slider;
        char items[kMaxChoiceItems][kChoiceLabelSize];  ///< choices: NUL-terminated labels
    };
    char label[kParamLabelSize];
    PanelRect panelRect;
    std::uint8_t visible;  ///< always 1
};

/// A frame in memory.
struct VideoFrameDesc {
    void* data;                  ///< first byte of the first stored row
    std::int32_t width;          ///< pixels
    std::int32_t height;         ///< rows
    std::int32_t stride;         ///< bytes from row to row; negative: stored bottom-up
    std::int32_t bytesPerPixel;  ///< 4 or 16 for frames to render
    std::uint32_t reserved[2];   ///< written as 0, never read
    std::uint32_t format;        ///< a `PixelFormat` code
    std::uint8_t flipped;        ///< nonzero: the picture's top is the last stored row
};

class IHostTexture;

/// A frame in a texture of the host.
struct GPUTexture {
    IHostTexture* handle;       ///< null means none
    std::int32_t format;        ///< a `PixelFormat` code
    std::int32_t textureWidth;  ///< allocated size in texels
    std::int32_t textureHeight;
    std::int32_t width;  ///< size of the picture inside the allocation
    std::int32_t height;
    std::int32_t xOffset;  ///< left edge of the picture inside the allocation
    std::int32_t yOffset;  ///< top edge of the picture inside the allocation
    std::uint8_t flipped;  ///< nonzero: the picture is stored upside down
};
using GPUFrameDesc = GPUTexture;

/// What the host says about the frame to render.
struct FrameRenderInfo {
    static constexpr std::uint32_t kHasField = 0x20;        ///< `field` is meaningful: the host renders by field
    static constexpr std::uint32_t kHasPixelAspect = 0x40;  ///< `pixelAspect` is meaningful
    static constexpr std::int16_t kWholeFrame = 3;          ///< `field` below this: one field of an interlaced frame

    std::uint32_t reserved0;
    std::uint32_t flags;
    std::uint32_t reserved8[2];
    double timeSeconds;  ///< from the start of the clip
    std::uint32_t reserved24[4];
    double pixelAspect;  ///< width of a pixel divided by its height
    std::uint32_t reserved48;
    std::int16_t field;
    std::uint16_t reserved54;
};
using RenderInfo = FrameRenderInfo;

static_assert(sizeof(ParamValue) == 8);
static_assert(sizeof(ParamInfo) == 276);
static_assert(offsetof(ParamInfo, defaultValue) == 0);
static_assert(offsetof(ParamInfo, type) == 8);
static_assert(offsetof(ParamInfo, minimum) == 12 && offsetof(ParamInfo, itemCount) == 12);
static_assert(offsetof(ParamInfo, groupEnd) == 12);
static_assert(offsetof(ParamInfo, slider) == 16 && offsetof(ParamInfo, items) == 16);
static_assert(offsetof(ParamInfo, label) == 216);
static_assert(offsetof(ParamInfo, panelRect) == 256);
static_assert(offsetof(ParamInfo, visible) == 272);
static_assert(sizeof(FrameRenderInfo) == 56);
static_assert(offsetof(FrameRenderInfo, flags) == 4);
static_assert(offsetof(FrameRenderInfo, timeSeconds) == 16);
static_assert(offsetof(FrameRenderInfo, pixelAspect) == 40);
static_assert(offsetof(FrameRenderInfo, field) == 52);
static_assert(sizeof(void*) != 4 ||
              (sizeof(VideoFrameDesc) == 36 && offsetof(VideoFrameDesc, width) == 4 &&
               offsetof(VideoFrameDesc, height) == 8 && offsetof(VideoFrameDesc, stride) == 12 &&
               offsetof(VideoFrameDesc, bytesPerPixel) == 16 && offsetof(VideoFrameDesc, reserved) == 20 &&
               offsetof(VideoFrameDesc, format) == 28 && offsetof(VideoFrameDesc, flipped) == 32));
static_assert(sizeof(void*) != 4 || (sizeof(GPUTexture) == 36 && offsetof(GPUTexture, format) == 4 &&
                                     offsetof(GPUTexture, textureWidth) == 8 &&
                                     offsetof(GPUTexture, textureHeight) == 12 && offsetof(GPUTexture, width) == 16 &&
                                     offsetof(GPUTexture, height) == 20 && offsetof(GPUTexture, xOffset) == 24 &&
                                     offsetof(GPUTexture, yOffset) == 28 && offsetof(GPUTexture, flipped) == 32));

}  // namespace lumiset
