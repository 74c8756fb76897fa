// Pictures of other sizes: what shape they keep, and what the filter does and does not let through.

#include "media/resize.h"

#include "tests/media/media_fixture.h"

namespace lumiset::media {
namespace {

TEST(Resize, KeepsTheShapeOfThePicture) {
    const struct {
        int width, height;
        Rational pixels;
        int askedWidth, askedHeight;
        int newWidth, newHeight;
        Rational newPixels;
    } kCases[] = {
        {1920, 1080, {1, 1}, 1280, 720, 1280, 720, {1, 1}},
        {1920, 1080, {1, 1}, 0, 480, 854, 480, {1, 1}},    // 853.3 across
        {1920, 1080, {1, 1}, 853, 480, 853, 480, {1, 1}},  // as other programs round it
        {1080, 1920, {1, 1}, 720, 0, 720, 1280, {1, 1}},
        {1920, 1080, {1, 1}, 960, 1080, 960, 1080, {2, 1}},
        {1440, 1080, {4, 3}, 1280, 720, 1280, 720, {1, 1}},
        {1440, 1080, {4, 3}, 0, 720, 960, 720, {4, 3}},
        {720, 576, {16, 15}, 640, 480, 640, 480, {1, 1}},
        {720, 576, {16, 15}, 360, 288, 360, 288, {16, 15}},
        {720, 576, {64, 45}, 854, 480, 854, 480, {1, 1}},
        {4000, 20, {1, 1}, 1000, 0, 1000, 16, {1, 1}},  // no side is smaller
    };
    for (const auto& each : kCases) {
        VideoFormat format;
        format.width = each.width;
        format.height = each.height;
        format.pixelAspect = each.pixels;
        const VideoFormat made = resized(format, each.askedWidth, each.askedHeight);
        SCOPED_TRACE(std::to_string(each.width) + " to " + std::to_string(made.width));
        EXPECT_EQ(made.width, each.newWidth);
        EXPECT_EQ(made.height, each.newHeight);
        if (each.newHeight > kSmallestSide) {
            EXPECT_EQ(made.pixelAspect.num, each.newPixels.num);
            EXPECT_EQ(made.pixelAspect.den, each.newPixels.den);
        }
    }
}

class ResizeTest : public testing::TestWithParam<Depth> {
protected:
    static Picture drawn(int width, int height, auto level) {
        Picture picture;
        picture.allocate(width, height, GetParam());
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                const double value = level(x, y);
                setPixel(picture, x, y, value, value, value);
            }
        }
        return picture;
    }
    static Picture resize(const Picture& picture, int width, int height) {
        Picture made;
        Resizer(width, height).resize(picture, made);
        EXPECT_EQ(made.width, width);
        EXPECT_EQ(made.height, height);
        return made;
    }
};

INSTANTIATE_TEST_SUITE_P(Depths, ResizeTest, testing::Values(Depth::kEightBit, Depth::kFloat));

TEST_P(ResizeTest, KeepsWhatTheNewSizeCanShowAndNothingElse) {
    // A slow wave stays where it is, stripes of one pixel become grey.
    const auto wave = [](double x) { return 127.5 + 100.0 * std::sin(x * 0.12); };
    const Picture waves = resize(drawn(160, 90, [&](int x, int) { return wave(x + 0.5); }), 80, 60);
    const Picture stripes = resize(drawn(160, 90, [](int x, int) { return x % 2 == 0 ? 255.0 : 0.0; }), 64, 90);
    for (int y = 0; y < 60; ++y) {
        for (int x = 8; x < 72; ++x) {
            EXPECT_NEAR(sampleOf(waves, x, y, 1), wave(2 * x + 1.0), 1.5) << x;
            EXPECT_EQ(sampleOf(waves, x, y, 3), 255.0);
        }
        for (int x = 8; x < 56; ++x) {
            EXPECT_NEAR(sampleOf(stripes, x, y, 1), 127.5, 8.0) << x;
        }
    }
    // Larger, too, and from pictures that are smaller than the filter.
    const Picture large = resize(drawn(5, 3, [](int, int) { return 100.0; }), 64, 48);
    EXPECT_NEAR(sampleOf(large, 0, 0, 0), 100.0, 0.01);
    EXPECT_NEAR(sampleOf(large, 63, 47, 2), 100.0, 0.01);
}

TEST_P(ResizeTest, ColoursOfTransparentPixelsShowNowhere) {
    Picture picture = flatPicture(64, 64, 0, 0, 255, 255, GetParam());
    for (int y = 0; y < 64; ++y) {
        for (int x = 31; x < 64; ++x) {
            setPixel(picture, x, y, 0, 255, 0, 0);
        }
    }
    const Picture made = resize(picture, 24, 24);
    bool between = false;
    for (int x = 0; x < 24; ++x) {
        const double alpha = sampleOf(made, x, 12, 3);
        between = between || (alpha > 20.0 && alpha < 235.0);
        if (alpha > 20.0) {
            EXPECT_NEAR(sampleOf(made, x, 12, 2), 255.0, 4.0) << x;
            EXPECT_NEAR(sampleOf(made, x, 12, 1), 0.0, 4.0) << x;
        }
    }
    EXPECT_TRUE(between) << "the edge is smooth";
}

TEST_P(ResizeTest, FieldsStayApart) {
    Picture picture = drawn(64, 64, [](int, int y) { return y % 2 == 0 ? 200.0 : 50.0; });
    picture.interlaced = true;
    picture.topFieldFirst = false;
    picture.pts = 7;
    const Picture made = resize(picture, 32, 34);
    for (int y = 0; y < made.height; ++y) {
        EXPECT_NEAR(sampleOf(made, 9, y, 0), y % 2 == 0 ? 200.0 : 50.0, 0.6) << y;
    }
    EXPECT_TRUE(made.interlaced);
    EXPECT_FALSE(made.topFieldFirst);
    EXPECT_EQ(made.pts, 7);
}

}  // namespace
}  // namespace lumiset::media
