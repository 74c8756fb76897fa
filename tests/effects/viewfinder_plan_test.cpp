// When the record light is lit, what the counter shows, and where marks stand, against values worked out by hand.

#include "effects/viewfinder/plan.h"

#include <gtest/gtest.h>
#include <stb_image.h>

#include <cstdlib>
#include <memory>

#include "platform/resource.h"

namespace lumiset {
namespace {

FrameFacts frameOf(std::int32_t width, std::int32_t height, bool isField = false,
                   const FrameRenderInfo* info = nullptr) {
    return {info, 0.0, isField, isField, width, height};
}

ViewfinderSettings everything() {
    ViewfinderSettings settings{};
    settings.record = settings.battery = settings.safeArea = settings.focusBox = settings.counter = true;
    return settings;
}

using Digits = std::array<std::int32_t, 6>;

TEST(ViewfinderPlan, LightIsLitForTheFirst800Of1100Milliseconds) {
    for (const double lit : {0.0, 0.8, 1.1, 1.9, 1100.0, 1100.8}) {
        EXPECT_TRUE(isLit(lit)) << lit;
    }
    for (const double dark : {0.801, 1.0999, 1.901, 2.199, 1100.801}) {
        EXPECT_FALSE(isLit(dark)) << dark;
    }
}

TEST(ViewfinderPlan, CounterCountsFromItsStartAndBeginsAnewAfterADay) {
    EXPECT_EQ(counterDigits(0, 0.999), (Digits{0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(counterDigits(0, 45296.5), (Digits{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(counterDigits(23 * 3600 + 59 * 60 + 59, 0.0), (Digits{2, 3, 5, 9, 5, 9}));
    EXPECT_EQ(counterDigits(23 * 3600 + 59 * 60 + 59, 1.0), (Digits{0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(counterDigits(3661, 86400.0), (Digits{0, 1, 0, 1, 0, 1}));
    for (const std::int32_t digit : counterDigits(0, 1e300)) {
        EXPECT_TRUE(digit >= 0 && digit <= 9);
    }
}

TEST(ViewfinderPlan, PictureKeeps30To300LinesOrAll) {
    EXPECT_EQ(resolutionGrid(0.0F, 1920, 1080).height, 30);
    EXPECT_EQ(resolutionGrid(0.0F, 1920, 1080).width, 53);
    EXPECT_EQ(resolutionGrid(0.5F, 1920, 1080).height, 165);
    EXPECT_EQ(resolutionGrid(0.98F, 1920, 1080).height, 294);
    EXPECT_EQ(resolutionGrid(0.99F, 1920, 1080).height, 1080);
    EXPECT_EQ(resolutionGrid(0.0F, 40, 30).height, 30);
    EXPECT_EQ(resolutionGrid(0.0F, 3, 2000).width, 1) << "a thin frame keeps a column";
}

TEST(ViewfinderPlan, TintKeepsItsOwnColourAndDarkensTheOthers) {
    constexpr std::uint32_t kOrange = 0x0080FF;
    EXPECT_EQ(tintFactors(kOrange, 0.5F), (std::array{1.0F, 1.0F, 1.0F}));
    EXPECT_EQ(tintFactors(kOrange, 0.2F), (std::array{1.0F, 1.0F, 1.0F}));
    const std::array<float, 3> half = tintFactors(kOrange, 0.75F);
    EXPECT_EQ(half[0], 1.0F);
    EXPECT_NEAR(half[1], 0.751F, 1e-3F);
    EXPECT_EQ(half[2], 0.5F);
}

TEST(ViewfinderPlan, LinesAreAtLeastOnePixelThickAndStayInTheFrame) {
    for (const auto& [width, height] : {std::pair{1, 1}, {2, 900}, {9, 700}, {900, 2}, {31, 17}, {4096, 2160}}) {
        for (const bool isField : {false, true}) {
            const OverlayPlan plan = planOverlay(everything(), frameOf(width, height, isField));
            for (const OverlayLines& lines : {plan.safeArea, plan.focusBox}) {
                for (const PixelRect& rect : lines.all()) {
                    EXPECT_TRUE(0 <= rect.left && rect.left < rect.right && rect.right <= width) << width;
                    EXPECT_TRUE(0 <= rect.top && rect.top < rect.bottom && rect.bottom <= height) << height;
                }
            }
        }
    }
    const OverlayPlan narrow = planOverlay(everything(), frameOf(20, 600));
    EXPECT_EQ(narrow.safeArea.rects[0].bottom - narrow.safeArea.rects[0].top, 1);
    EXPECT_EQ(narrow.safeArea.rects[2].right - narrow.safeArea.rects[2].left, 1);
}

TEST(ViewfinderPlan, FieldsHaveLinesOfHalfTheRows) {
    const OverlayPlan frame = planOverlay(everything(), frameOf(1500, 600));
    const OverlayPlan field = planOverlay(everything(), frameOf(1500, 600, true));
    const auto rows = [](const PixelRect& rect) { return rect.bottom - rect.top; };
    EXPECT_EQ(rows(frame.safeArea.rects[0]), 10);
    EXPECT_EQ(rows(field.safeArea.rects[0]), 5);
    EXPECT_EQ(rows(field.focusBox.rects[0]), 5);
    EXPECT_EQ(field.safeArea.rects[2].right - field.safeArea.rects[2].left, 10);
}

TEST(ViewfinderPlan, MarksKeepTheirShapeOnScreenWhateverAPixelIs) {
    FrameRenderInfo info{};
    info.flags = FrameRenderInfo::kHasPixelAspect;
    info.field = FrameRenderInfo::kWholeFrame;
    info.pixelAspect = 2.0;
    const FontSize square = fontSize(frameOf(1400, 700));
    const FontSize wide = fontSize(frameOf(1400, 700, false, &info));
    const FontSize field = fontSize(frameOf(1400, 350, true));
    EXPECT_EQ(square.height, 56);
    EXPECT_EQ(scaledCell(Artwork::kDigits, square).width, 30);
    EXPECT_EQ(scaledCell(Artwork::kDigits, wide).width, 15);
    EXPECT_EQ(scaledCell(Artwork::kDigits, wide).height, 56);
    EXPECT_EQ(field.height, 56) << "a whole frame's";
    EXPECT_EQ(scaledCell(Artwork::kBattery, field).width, scaledCell(Artwork::kBattery, square).width);
    EXPECT_EQ(scaledCell(Artwork::kBattery, field).height, 28);
    EXPECT_EQ(fontSize(frameOf(100, 170, true)).height, 26) << "27 is made even";
    EXPECT_EQ(planOverlay(everything(), frameOf(40, 12)).markCount, 0U) << "too low for a font";
}

TEST(ViewfinderArtwork, IsStoredInFourChannelsWithAnOpaqueAlpha) {
    for (const std::uint32_t id : {501U, 601U, 701U, 801U}) {
        const std::span<const std::uint8_t> file = platform::findResource(id);
        int width = 0;
        int height = 0;
        int channels = 0;
        const std::unique_ptr<std::uint8_t[], decltype(&std::free)> pixels(
            stbi_load_from_memory(file.data(), static_cast<int>(file.size()), &width, &height, &channels, 4),
            &std::free);
        ASSERT_NE(pixels, nullptr) << id;
        EXPECT_EQ(channels, 4) << id;
        int wrong = 0;
        for (std::int32_t i = 0; i < width * height; ++i) {
            const std::uint8_t* pixel = pixels.get() + 4 * i;
            wrong += pixel[0] == pixel[1] && pixel[1] == pixel[2] && pixel[3] == 255 ? 0 : 1;
        }
        EXPECT_EQ(wrong, 0) << id;
    }
}

}  // namespace
}  // namespace lumiset
