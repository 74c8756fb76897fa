#include <array>
#include <cstdio>

#include "apps/lumiset/media/scene_parts.h"

namespace lumiset::media {
namespace {

// Letters as strokes on a grid of 4 columns and 6 rows: points as "xy" digits, strokes parted by blanks.
struct Glyph {
    char letter;
    const char* strokes;
};
constexpr Glyph kGlyphs[] = {
    {'A', "0620 2046 1434"},
    {'B', "0600304133430 "},
    {'C', "4130100115163645"},
    {'D', "00062636454130200 "},
    {'E', "40000646 0333"},
    {'F', "400006 0333"},
    {'G', "4130100105163645 4323"},
    {'H', "0006 4046 0343"},
    {'I', "2026"},
    {'J', "3035241504"},
    {'K', "0006 4003 1246"},
    {'L', "000646"},
    {'M', "0600234046"},
    {'N', "06004640"},
    {'O', "1030414536160501 10"},
    {'P', "060030414233 0333"},
    {'R', "060030414233 0333 2346"},
    {'S', "4130100102133344453616 1605"},
    {'T', "0040 2026"},
    {'U', "0005163645 4540"},
    {'V', "002640"},
    {'W', "0016234640"},
    {'X', "0046 4006"},
    {'Y', "0023 4023 2326"},
    {'Z', "00400646"},
    {'0', "103041453616050110"},
    {'1', "112026 1636"},
    {'2', "011030414206 0646"},
    {'3', "004023 2333444536160 5"},
    {'4', "3600 3630 0444"},
    {'5', "4000033344453606"},
    {'6', "301002051636454433 3303"},
    {'7', "004016"},
    {'8', "1030414233130201 10 1333444536160504 13"},
    {'9', "4313020110304145 4536 16"},
    {'.', "1616"},
    {':', "1212 1515"},
    {',', "1607"},
};
constexpr float kColumns = 4;
constexpr float kRows = 6;
constexpr float kGap = 2.1F;

// Calls `stroke(from, to)` for each straight stroke, points in grid units. Letters' corners are rounded by the pen.
template <class Stroke>
void forEachStroke(char letter, Stroke stroke) {
    for (const Glyph& glyph : kGlyphs) {
        if (glyph.letter != letter) {
            continue;
        }
        bool down = false;
        Vec last;
        for (const char* c = glyph.strokes; *c != '\0';) {
            if (c[0] == ' ' || c[1] == ' ' || c[1] == '\0') {
                down = false;
                c++;
                continue;
            }
            const Vec point = {static_cast<float>(c[0] - '0'), static_cast<float>(c[1] - '0')};
            if (down) {
                stroke(last, point);
            }
            last = point;
            down = true;
            c += 2;
        }
    }
}

float advance(char letter, float height) {
    const float grid = height / kRows;
    return letter == 'I' || letter == '.' || letter == ',' || letter == ':' ? grid * (kGap + 0.6F)
                                                                            : grid * (kColumns + kGap);
}

}  // namespace

float textWidth(std::string_view text, float height) {
    float width = 0;
    for (const char letter : text) {
        width += advance(letter, height);
    }
    return width - height / kRows * kGap;
}

void drawText(SceneCanvas& canvas, std::string_view text, Vec origin, float height, float strokeWidth, Color color,
              float alpha, float softness) {
    const float grid = height / kRows;
    struct Line {
        Vec from, to;
    };
    std::vector<Line> lines;
    for (const char letter : text) {
        const bool narrow = letter == 'I' || letter == '.' || letter == ',' || letter == ':';
        const float shift = letter == 'I' ? 1.7F : narrow ? 0.7F : 0;
        lines.clear();
        forEachStroke(letter, [&](Vec from, Vec to) {
            lines.push_back({origin + Vec{(from.x - shift) * grid, from.y * grid},
                             origin + Vec{(to.x - shift) * grid, to.y * grid}});
        });
        const float reach = strokeWidth + softness + canvas.pixel();
        const Box box = {origin.x - reach, origin.y - reach, origin.x + kColumns * grid + reach,
                         origin.y + height + reach};
        canvas.draw(box, [&](Vec p) -> Paint {
            float d = 1;
            for (const Line& line : lines) {
                d = std::min(d, segment(p, line.from, line.to, 0));
            }
            const float covered = softness > 0 ? smooth(strokeWidth / 2 + softness, strokeWidth / 2 - softness, d)
                                               : canvas.lineCoverage(d, strokeWidth / 2);
            return {color, covered * alpha};
        });
        origin.x += advance(letter, height);
    }
}

void drawTitle(SceneCanvas& canvas) {
    constexpr float kHeight = 0.115F;
    constexpr float kStroke = 0.026F;
    const float left = -0.5F * textWidth("LUMISET", kHeight);
    // Half of the letters stands over the window's edge.
    const Vec at = {left, -canvas.half().y + 0.035F};
    drawText(canvas, "LUMISET", at + Vec{0.006F, 0.010F}, kHeight, kStroke, {0.02F, 0.05F, 0.14F}, 0.55F, 0.012F);
    drawText(canvas, "LUMISET", at, kHeight, kStroke, {0.99F, 0.96F, 0.90F}, 1, 0);
    drawText(canvas, "LUMISET", at, kHeight, 0.006F, {0.90F, 0.36F, 0.12F}, 1, 0);
    constexpr std::string_view kLine = "A SCENE TO TRY EFFECTS ON: SKIN, SKY, LEAVES, FINE LINES";
    constexpr float kSmall = 0.0165F;
    const Vec below = {-0.5F * textWidth(kLine, kSmall), at.y + kHeight + 0.032F};
    drawText(canvas, kLine, below + Vec{0.0015F, 0.002F}, kSmall, 0.004F, {0.05F, 0.15F, 0.4F}, 0.7F, 0.004F);
    drawText(canvas, kLine, below, kSmall, 0.0027F, {1, 1, 1}, 0.95F, 0);
}

}  // namespace lumiset::media
