#include "media/sheet.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

#include "media/lettering.h"

namespace lumiset::media {
namespace {

using Ink = std::array<float, 3>;  // blue, green, red
constexpr Ink kPaper = {36, 32, 30};
constexpr Ink kTitleInk = {255, 255, 255};
constexpr Ink kNoteInk = {170, 165, 160};
constexpr Ink kLabelInk = {235, 230, 225};
constexpr float kSquares[2] = {110, 150};  // the checkerboard's greys

constexpr int kUsualTileWidth = 320;
constexpr double kPleasantShape = 1.5;  // a sheet's width divided by its height

/// Calls `part(index, weight)` for the samples of a row of `from` that one of `to` samples covers; weights add up
/// to 1.
template <class Part>
void forEachPart(int i, int from, int to, Part part) {
    const double scale = static_cast<double>(from) / to;
    const double begin = i * scale;
    const double end = std::min((i + 1) * scale, static_cast<double>(from));
    for (int k = static_cast<int>(begin); k < from && k < end; ++k) {
        part(k, static_cast<float>((std::min(k + 1.0, end) - std::max<double>(k, begin)) / scale));
    }
}

int chooseColumns(int tiles, int cellWidth, int cellHeight) {
    int best = 1;
    double bestCost = 1e9;
    for (int columns = 1; columns <= tiles; ++columns) {
        const int rows = (tiles + columns - 1) / columns;
        const double shape = static_cast<double>(columns * cellWidth) / (rows * cellHeight);
        const double empty = static_cast<double>(rows * columns - tiles) / columns;
        const double cost = std::abs(std::log(shape / kPleasantShape)) + 0.5 * empty;
        if (cost < bestCost) {
            bestCost = cost;
            best = columns;
        }
    }
    return best;
}

/// Draws a line of text whose capitals are `height` pixels, smaller where it is wider than `room`, and cut where it
/// cannot be read any more.
void drawLine(Picture& sheet, std::string text, float left, float top, float height, float room, bool centred,
              const Ink& ink) {
    constexpr float kLeastHeight = 6.0F;
    const float wanted = textWidth(text, height);
    if (wanted > room) {
        const float smaller = std::max(height * room / wanted, std::min(height, kLeastHeight));
        top += (height - smaller) / 2;
        height = smaller;
    }
    if (textWidth(text, height) > room * 1.01F) {
        while (!text.empty() && textWidth(text + "...", height) > room) {
            text.pop_back();
        }
        text += "...";
    }
    if (centred) {
        left += (room - textWidth(text, height)) / 2;
    }
    const TextImage letters = drawText(text, height, left - std::floor(left));
    const int x0 = static_cast<int>(std::floor(left)) + letters.left;
    const int y0 = static_cast<int>(std::lround(top)) + letters.top;
    for (int y = std::max(0, y0); y < std::min(sheet.height, y0 + letters.height); ++y) {
        for (int x = std::max(0, x0); x < std::min(sheet.width, x0 + letters.width); ++x) {
            const float covered = letters.at(x - x0, y - y0);
            std::uint8_t* pixel = sheet.row(y) + 4 * x;
            for (std::size_t c = 0; c < 3; ++c) {
                const auto under = static_cast<float>(pixel[c]);
                pixel[c] = static_cast<std::uint8_t>(under + (ink[c] - under) * covered + 0.5F);
            }
        }
    }
}

}  // namespace

Sheet::Sheet(const Plan& plan) : m_tileWidth(plan.tileWidth > 0 ? plan.tileWidth : kUsualTileWidth) {
    const double shown = plan.pictureHeight / (plan.pictureWidth * (plan.pixelAspect > 0.0 ? plan.pixelAspect : 1.0));
    m_tileHeight = static_cast<int>(std::clamp(std::lround(m_tileWidth * shown), 1L, 16384L));
    m_gap = std::max(6, m_tileWidth / 24);
    const float letters = std::clamp(static_cast<float>(m_tileWidth) * 0.039F, 8.0F, 28.0F);
    m_labelHeight = static_cast<int>(letters * 2.2F);
    const float titleLetters = letters * 1.7F;
    const float noteLetters = letters * 0.85F;
    const float noteTop = static_cast<float>(m_gap) + titleLetters * 1.75F;
    m_headHeight = plan.note.empty() ? m_gap + static_cast<int>(titleLetters * 1.9F)
                                     : static_cast<int>(noteTop + noteLetters * 2.1F);
    const int tiles = static_cast<int>(plan.labels.size());
    m_columns =
        std::min(plan.columns > 0 ? plan.columns
                                  : chooseColumns(tiles, m_tileWidth + m_gap, m_tileHeight + m_labelHeight + m_gap),
                 tiles);
    const int rows = (tiles + m_columns - 1) / m_columns;
    m_sheet.allocate(m_columns * (m_tileWidth + m_gap) + m_gap,
                     m_headHeight + rows * (m_tileHeight + m_labelHeight + m_gap), Depth::kEightBit);
    for (int y = 0; y < m_sheet.height; ++y) {
        for (int x = 0; x < m_sheet.width; ++x) {
            std::uint8_t* pixel = m_sheet.row(y) + 4 * x;
            std::copy(kPaper.begin(), kPaper.end(), pixel);
            pixel[3] = 255;
        }
    }
    const auto left = static_cast<float>(m_gap);
    const float room = static_cast<float>(m_sheet.width) - 2 * left;
    drawLine(m_sheet, plan.title, left, left, titleLetters, room, false, kTitleInk);
    drawLine(m_sheet, plan.note, left, noteTop, noteLetters, room, false, kNoteInk);
    for (std::size_t tile = 0; tile < plan.labels.size(); ++tile) {
        drawLine(m_sheet, plan.labels[tile], static_cast<float>(tileLeft(tile)),
                 static_cast<float>(tileTop(tile) + m_tileHeight) + letters * 0.6F, letters,
                 static_cast<float>(m_tileWidth), true, kLabelInk);
    }
}

int Sheet::tileLeft(std::size_t tile) const {
    return m_gap + static_cast<int>(tile) % m_columns * (m_tileWidth + m_gap);
}

int Sheet::tileTop(std::size_t tile) const {
    return m_headHeight + static_cast<int>(tile) / m_columns * (m_tileHeight + m_labelHeight + m_gap);
}

void Sheet::place(std::size_t tile, const Picture& picture) {
    const int square = std::max(4, m_tileWidth / 40);
    std::vector<float> sums(static_cast<std::size_t>(picture.width) * 4);
    for (int y = 0; y < m_tileHeight; ++y) {
        // Averages are those of premultiplied samples: a transparent pixel's colour does not count.
        std::fill(sums.begin(), sums.end(), 0.0F);
        forEachPart(y, picture.height, m_tileHeight, [&](int k, float weight) {
            const std::uint8_t* row = picture.row(k);
            for (std::size_t i = 0; i < sums.size(); i += 4) {
                const float alpha = weight * static_cast<float>(row[i + 3]) / 255.0F;
                for (std::size_t c = 0; c < 3; ++c) {
                    sums[i + c] += static_cast<float>(row[i + c]) * alpha;
                }
                sums[i + 3] += alpha;
            }
        });
        std::uint8_t* target = m_sheet.row(tileTop(tile) + y) + 4 * tileLeft(tile);
        for (int x = 0; x < m_tileWidth; ++x, target += 4) {
            std::array<float, 4> mean{};
            forEachPart(x, picture.width, m_tileWidth, [&](int k, float weight) {
                for (std::size_t c = 0; c < 4; ++c) {
                    mean[c] += weight * sums[4 * static_cast<std::size_t>(k) + c];
                }
            });
            const float under = kSquares[(x / square + y / square) % 2] * (1.0F - mean[3]);
            for (std::size_t c = 0; c < 3; ++c) {
                target[c] = static_cast<std::uint8_t>(std::clamp(mean[c] + under + 0.5F, 0.0F, 255.0F));
            }
        }
    }
}

VideoFormat Sheet::format() const {
    VideoFormat format;
    format.width = m_sheet.width;
    format.height = m_sheet.height;
    return format;
}

}  // namespace lumiset::media
