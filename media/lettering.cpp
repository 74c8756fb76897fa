#include "media/lettering.h"

#include <algorithm>
#include <cmath>

#include "media/embedded_files.h"

extern "C" {
#include <libavutil/avstring.h>
}

#define STB_TRUETYPE_IMPLEMENTATION
#define STBTT_STATIC
#include <stb_truetype.h>

namespace lumiset::media {
namespace {

const stbtt_fontinfo& font() {
    static const stbtt_fontinfo loaded = [] {
        stbtt_fontinfo info{};
        ::stbtt_InitFont(&info, embeddedFile(EmbeddedFile::kFont).data(), 0);
        return info;
    }();
    return loaded;
}

/// Pixels in a unit of the font.
float scaleFor(float height) {
    int left = 0;
    int bottom = 0;
    int right = 0;
    int top = 0;
    ::stbtt_GetCodepointBox(&font(), 'H', &left, &bottom, &right, &top);
    return height / static_cast<float>(std::max(top, 1));
}

/// Calls `each(glyph, x)` for the characters of a line, x in pixels, and returns where the line ends. Bytes that are no
/// UTF-8 count as characters that the font does not have.
template <class Each>
float layOut(std::string_view text, float scale, Each each) {
    const auto* byte = reinterpret_cast<const std::uint8_t*>(text.data());
    const std::uint8_t* const end = byte + text.size();
    float x = 0;
    int last = 0;
    while (byte < end) {
        std::int32_t character = 0;
        if (::av_utf8_decode(&character, &byte, end, AV_UTF8_FLAG_ACCEPT_ALL) < 0) {
            character = 0xFFFD;
        }
        const int glyph = ::stbtt_FindGlyphIndex(&font(), character);
        int advance = 0;
        int bearing = 0;
        ::stbtt_GetGlyphHMetrics(&font(), glyph, &advance, &bearing);
        x += scale * static_cast<float>(last != 0 ? ::stbtt_GetGlyphKernAdvance(&font(), last, glyph) : 0);
        each(glyph, x);
        x += scale * static_cast<float>(advance);
        last = glyph;
    }
    return x;
}

}  // namespace

float TextImage::at(int x, int y) const {
    if (x < 0 || y < 0 || x >= width || y >= height) {
        return 0;
    }
    return static_cast<float>(
               coverage[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)]) /
           255;
}

float textWidth(std::string_view text, float height) {
    return layOut(text, scaleFor(height), [](int, float) {});
}

TextImage drawText(std::string_view text, float height, float offset) {
    const float scale = scaleFor(height);
    int ascent = 0;
    int descent = 0;
    int gap = 0;
    ::stbtt_GetFontVMetrics(&font(), &ascent, &descent, &gap);
    // Letters may reach a little beyond their places on either side.
    const int margin = static_cast<int>(std::ceil(height));
    const int line = static_cast<int>(std::ceil(height));
    TextImage image;
    image.left = -margin;
    image.top = line - static_cast<int>(std::ceil(static_cast<float>(ascent) * scale)) - 1;
    image.width = static_cast<int>(std::ceil(textWidth(text, height))) + 2 * margin;
    image.height = line - static_cast<int>(std::floor(static_cast<float>(descent) * scale)) + 1 - image.top;
    image.coverage.resize(static_cast<std::size_t>(image.width) * static_cast<std::size_t>(image.height));
    const float baseline = height - static_cast<float>(line);
    std::vector<std::uint8_t> letter;
    layOut(text, scale, [&](int glyph, float x) {
        const float place = x + offset;
        const float whole = std::floor(place);
        int left = 0;
        int top = 0;
        int right = 0;
        int bottom = 0;
        ::stbtt_GetGlyphBitmapBoxSubpixel(&font(), glyph, scale, scale, place - whole, baseline, &left, &top, &right,
                                          &bottom);
        const int width = right - left;
        letter.assign(static_cast<std::size_t>(width) * static_cast<std::size_t>(bottom - top), 0);
        ::stbtt_MakeGlyphBitmapSubpixel(&font(), letter.data(), width, bottom - top, width, scale, scale, place - whole,
                                        baseline, glyph);
        for (int y = 0; y < bottom - top; y++) {
            const int row = line + top + y - image.top;
            for (int column = 0; column < width; column++) {
                const int to = static_cast<int>(whole) + left + column - image.left;
                if (row >= 0 && row < image.height && to >= 0 && to < image.width) {
                    std::uint8_t& covered =
                        image.coverage[static_cast<std::size_t>(row) * static_cast<std::size_t>(image.width) +
                                       static_cast<std::size_t>(to)];
                    covered = static_cast<std::uint8_t>(
                        std::min(255, covered + letter[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                                                       static_cast<std::size_t>(column)]));
                }
            }
        }
    });
    return image;
}

}  // namespace lumiset::media
