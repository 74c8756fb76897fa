#include "effects/viewfinder/plan.h"

#include <algorithm>
#include <cmath>

namespace lumiset {
namespace {

constexpr std::array<ArtworkCells, kArtworkCount> kCells{{
    {501, 600, 1120, kDigitShapes, 1.0F},
    {601, 600, 1120, kSeparatorShapes, 1.0F},
    {701, 1302, 736, kRecordShapes, 1.0F},
    {801, 2156, 874, kBatteryShapes, 1.0F},
    {0, 512, 512, kLightShapes, 0.7F},
}};

/// Thickness of lines; that of horizontal ones counts in rows of the frame.
struct LineThickness {
    std::int32_t columns;
    std::int32_t rows;
};
LineThickness lineThickness(const FrameFacts& facts) {
    const std::int32_t columns = std::max(1, facts.width / 150);
    return {columns, facts.isField ? std::max(1, columns / 2) : columns};
}

/// The part of the frame in the middle that has `share` fifths of its width and height, in whole pixels.
PixelRect middle(const FrameFacts& facts, std::int64_t fifths, bool even) {
    const auto part = [&](std::int32_t size) {
        const auto whole = static_cast<std::int32_t>(size * fifths / 5);
        return even ? (whole | 1) - 1 : whole;
    };
    const std::int32_t width = part(facts.width);
    const std::int32_t height = part(facts.height);
    const std::int32_t left = (facts.width - width) >> 1;
    const std::int32_t top = (facts.height - height) >> 1;
    return {left, top, left + width, top + height};
}

/// Adds a stroke, as much of it as the frame holds.
void addStroke(OverlayLines& lines, const FrameFacts& facts, PixelRect rect) {
    rect = {std::max(rect.left, 0), std::max(rect.top, 0), std::min(rect.right, facts.width),
            std::min(rect.bottom, facts.height)};
    if (rect.left < rect.right && rect.top < rect.bottom) {
        lines.rects[lines.count++] = rect;
    }
}

OverlayLines safeAreaLines(const FrameFacts& facts) {
    const PixelRect area = middle(facts, 4, true);
    OverlayLines lines{};
    if (area.left == area.right || area.top == area.bottom) {
        return lines;
    }
    const auto [columns, rows] = lineThickness(facts);
    addStroke(lines, facts, {area.left, area.top, area.right, area.top + rows});
    addStroke(lines, facts, {area.left, area.bottom - rows, area.right, area.bottom});
    addStroke(lines, facts, {area.left, area.top, area.left + columns, area.bottom});
    addStroke(lines, facts, {area.right - columns, area.top, area.right, area.bottom});
    return lines;
}

OverlayLines focusBoxLines(const FrameFacts& facts) {
    const PixelRect box = middle(facts, 1, false);
    const std::int32_t width = (box.right - box.left) / 3;
    const std::int32_t height = (box.bottom - box.top) / 3;
    const auto [columns, rows] = lineThickness(facts);
    OverlayLines lines{};
    for (const bool bottom : {false, true}) {
        for (const bool right : {false, true}) {
            const std::int32_t x = right ? box.right - width : box.left;
            const std::int32_t y = bottom ? box.bottom - rows : box.top;
            addStroke(lines, facts, {x, y, x + width, y + rows});
            const std::int32_t columnX = right ? box.right - columns : box.left;
            const std::int32_t columnY = bottom ? box.bottom - height : box.top;
            addStroke(lines, facts, {columnX, columnY, columnX + columns, columnY + height});
        }
    }
    return lines;
}

void addRecord(OverlayPlan& plan, const FrameFacts& facts) {
    constexpr float kMargin = 0.022F;
    constexpr float kLightDistance = 1.7F;  // of the light's own width
    const CellSize mark = scaledCell(Artwork::kRecord, plan.font);
    const CellSize light = scaledCell(Artwork::kLight, plan.font);
    const auto marginX = static_cast<std::int32_t>(kMargin * static_cast<float>(facts.width));
    const auto marginY = static_cast<std::int32_t>(kMargin * static_cast<float>(facts.height));
    const std::int32_t x = facts.width - marginX - mark.width;
    const auto distance = static_cast<std::int32_t>(kLightDistance * static_cast<float>(light.width));
    plan.marks[plan.markCount++] = {Artwork::kLight, 0, x - distance, marginY + (mark.height - light.height) / 2,
                                    kLightColor};
    plan.marks[plan.markCount++] = {Artwork::kRecord, 0, x, marginY, kMarkColor};
}

void addCounter(OverlayPlan& plan, const ViewfinderSettings& settings, const FrameFacts& facts) {
    const CellSize digit = scaledCell(Artwork::kDigits, plan.font);
    const CellSize separator = scaledCell(Artwork::kSeparators, plan.font);
    constexpr std::int32_t kColon = 0;
    constexpr std::int64_t kLowerEdge = 88;  // of 100
    std::int32_t x = (facts.width - 6 * digit.width - 2 * separator.width) / 2;
    const std::int32_t y = static_cast<std::int32_t>(facts.height * kLowerEdge / 100) - digit.height;
    const std::array<std::int32_t, 6> digits = counterDigits(settings.startSeconds, facts.timeSeconds);
    for (std::size_t i = 0; i < digits.size(); ++i) {
        if (i == 2 || i == 4) {
            plan.marks[plan.markCount++] = {Artwork::kSeparators, kColon, x, y, kMarkColor};
            x += separator.width;
        }
        plan.marks[plan.markCount++] = {Artwork::kDigits, digits[i], x, y, kMarkColor};
        x += digit.width;
    }
}

}  // namespace

const ArtworkCells& artworkCells(Artwork artwork) {
    return kCells[static_cast<std::size_t>(artwork)];
}

FontSize fontSize(const FrameFacts& facts) {
    constexpr std::int64_t kShare = 8;  // of 100
    const auto height = static_cast<std::int32_t>(facts.height * kShare * (facts.isField ? 2 : 1) / 100);
    // Beyond these a picture is not meant to be looked at.
    constexpr float kMostAspect = 16.0F;
    const float aspect = PixelAspectScale(facts.info, false, false).aspect;
    return {facts.isField ? height & ~1 : height, facts.isField, std::clamp(aspect, 1.0F / kMostAspect, kMostAspect)};
}

CellSize scaledCell(Artwork artwork, const FontSize& font) {
    const ArtworkCells& cells = artworkCells(artwork);
    const float height = static_cast<float>(font.height) * cells.share;
    const float width = height * static_cast<float>(cells.width) / static_cast<float>(cells.height) / font.aspect;
    return {std::max(1, static_cast<std::int32_t>(width)),
            std::max(1, static_cast<std::int32_t>(height * (font.isField ? 0.5F : 1.0F)))};
}

std::int32_t fontBlurSize(float scale) {
    constexpr float kHalfSoftness = 0.75F;  // scaled pixels
    constexpr float kMost = 499.0F;
    return 2 * static_cast<std::int32_t>(std::min(kHalfSoftness * scale, kMost)) + 1;
}

OverlayPlan planOverlay(const ViewfinderSettings& settings, const FrameFacts& facts) {
    OverlayPlan plan{};
    plan.shadow = settings.outline ? 1 : 0;
    plan.font = fontSize(facts);
    if (settings.safeArea) {
        plan.safeArea = safeAreaLines(facts);
    }
    if (settings.focusBox) {
        plan.focusBox = focusBoxLines(facts);
    }
    if (plan.font.height == 0) {
        return plan;
    }
    if (settings.record && isLit(facts.timeSeconds)) {
        addRecord(plan, facts);
    }
    if (settings.battery) {
        plan.marks[plan.markCount++] = {Artwork::kBattery, 0, 2, 2, kMarkColor};
    }
    if (settings.counter) {
        addCounter(plan, settings, facts);
    }
    return plan;
}

bool isLit(double timeSeconds) {
    return std::fmod(std::trunc(timeSeconds * 1000.0), 1100.0) <= 800.0;
}

std::array<std::int32_t, 6> counterDigits(std::int32_t startSeconds, double timeSeconds) {
    constexpr std::int32_t kDay = 24 * 3600;
    const auto elapsed = static_cast<std::int32_t>(std::fmod(std::trunc(timeSeconds), kDay));
    const std::int32_t total = (startSeconds + elapsed) % kDay;
    const std::int32_t numbers[3] = {total / 3600, total % 3600 / 60, total % 60};
    std::array<std::int32_t, 6> digits{};
    for (std::size_t i = 0; i < 3; ++i) {
        digits[2 * i] = numbers[i] / 10;
        digits[2 * i + 1] = numbers[i] % 10;
    }
    return digits;
}

CellSize resolutionGrid(float resolution, std::int32_t width, std::int32_t height) {
    constexpr float kFull = 0.99F;
    const auto rows = static_cast<std::int32_t>(30.0F + 270.0F * resolution);
    if (!(resolution < kFull) || rows >= height) {
        return {width, height};
    }
    return {std::max(1, static_cast<std::int32_t>(std::int64_t{rows} * width / height)), rows};
}

std::array<float, 3> tintFactors(std::uint32_t tintColor, float tint) {
    const float strength = std::max(0.0F, 2.0F * tint - 1.0F);
    std::array<float, 3> factors{};
    for (std::size_t i = 0; i < 3; ++i) {
        const float level = static_cast<float>(tintColor >> (8 * i) & 0xFFU) / 255.0F;
        factors[i] = (1.0F - strength) * (1.0F - level) + level;
    }
    return factors;
}

}  // namespace lumiset
