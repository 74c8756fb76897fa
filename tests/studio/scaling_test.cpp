#include <gtest/gtest.h>

#include <array>
#include <cmath>

#include "apps/studio/core/export_sizes.h"
#include "apps/studio/core/picture_scaling.h"
#include "hostkit/thread_pool.h"

namespace lumiset::studio {
namespace {

using Pixel = std::array<int, 4>;

media::Picture pictureOf(int width, int height, const std::vector<Pixel>& pixels) {
    media::Picture picture;
    picture.allocate(width, height, media::Depth::kEightBit);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            for (std::size_t c = 0; c < 4; ++c) {
                picture.row(y)[4 * x + static_cast<int>(c)] =
                    static_cast<std::uint8_t>(pixels[static_cast<std::size_t>(y * width + x)][c]);
            }
        }
    }
    return picture;
}

Pixel at(const DisplayPicture& picture, int x, int y) {
    const std::uint8_t* pixel = picture.pixel(x, y);
    return {pixel[0], pixel[1], pixel[2], pixel[3]};
}

TEST(PictureScalingTest, AveragesAreas) {
    // Three columns to two: each takes one column and half of the middle one.
    const media::Picture wide = pictureOf(
        3, 2, {{30, 0, 0, 255}, {60, 0, 0, 255}, {90, 0, 0, 255}, {0, 30, 0, 255}, {0, 60, 0, 255}, {0, 90, 0, 255}});
    const DisplayPicture two = displayOf(wide, {2, 1}, nullptr);
    EXPECT_TRUE(two.opaque);
    EXPECT_EQ(at(two, 0, 0), (Pixel{20, 20, 0, 255}));
    EXPECT_EQ(at(two, 1, 0), (Pixel{40, 40, 0, 255}));
}

TEST(PictureScalingTest, TransparentColoursDoNotCountAndComeOutMultiplied) {
    const media::Picture half = pictureOf(2, 1, {{204, 102, 51, 250}, {7, 255, 9, 0}});
    const DisplayPicture one = displayOf(half, {1, 1}, nullptr);
    EXPECT_FALSE(one.opaque);
    EXPECT_EQ(at(one, 0, 0), (Pixel{100, 50, 25, 125}));
    media::Picture reduced;
    reduce(half, {1, 1}, reduced, nullptr);  // straight again
    EXPECT_EQ(reduced.row(0)[0], 204);
    EXPECT_EQ(reduced.row(0)[3], 125);
}

TEST(PictureScalingTest, KeepsBytesAtTheirSizeAndEdgesWhereItGrows) {
    const media::Picture edge = pictureOf(2, 1, {{1, 2, 3, 255}, {251, 252, 253, 255}});
    const DisplayPicture same = displayOf(edge, {2, 1}, nullptr);
    EXPECT_EQ(at(same, 0, 0), (Pixel{1, 2, 3, 255}));
    EXPECT_EQ(at(same, 1, 0), (Pixel{251, 252, 253, 255}));
    const DisplayPicture large = displayOf(edge, {6, 3}, nullptr);
    EXPECT_EQ(at(large, 2, 2), (Pixel{1, 2, 3, 255}));
    EXPECT_EQ(at(large, 3, 0), (Pixel{251, 252, 253, 255}));
}

TEST(PictureScalingTest, DithersFloatsToTheirMean) {
    media::Picture grey;
    grey.allocate(64, 64, media::Depth::kFloat);
    for (int y = 0; y < 64; ++y) {
        for (int x = 0; x < 64; ++x) {
            for (int c = 0; c < 4; ++c) {
                media::samples<float>(grey, y)[4 * x + c] = c == 3 ? 1.0F : 100.3F / 255.0F;
            }
        }
    }
    const auto pool = hostkit::ThreadPool::create(2);
    const DisplayPicture shown = displayOf(grey, {64, 64}, pool.get());
    double sum = 0.0;
    for (int y = 0; y < 64; ++y) {
        for (int x = 0; x < 64; ++x) {
            const int value = at(shown, x, y)[0];
            ASSERT_TRUE(value == 100 || value == 101) << value;
            sum += value;
        }
    }
    EXPECT_NEAR(sum / 4096.0, 100.3, 0.02);
}

// Noise must look as it does from further away, not as it does close up.
TEST(PictureScalingTest, CalmsNoiseAsDistanceDoes) {
    media::Picture noise;
    noise.allocate(300, 300, media::Depth::kEightBit);
    std::uint32_t state = 1;
    for (int y = 0; y < 300; ++y) {
        for (int x = 0; x < 300; ++x) {
            state = state * 1664525U + 1013904223U;
            for (int c = 0; c < 4; ++c) {
                noise.row(y)[4 * x + c] = c == 3 ? 255 : static_cast<std::uint8_t>(state >> 24U);
            }
        }
    }
    const DisplayPicture third = displayOf(noise, {100, 100}, nullptr);
    double sum = 0.0;
    double squares = 0.0;
    for (int i = 0; i < 10000; ++i) {
        const double value = at(third, i % 100, i / 100)[0];
        sum += value;
        squares += value * value;
    }
    const double deviation = std::sqrt(squares / 1e4 - sum * sum / 1e8);
    EXPECT_NEAR(deviation, 73.9 / 3.0, 1.5);  // of nine samples each
}

TEST(PictureScalingTest, TakesFieldsApart) {
    const media::Picture woven =
        pictureOf(1, 5, {{10, 0, 0, 255}, {200, 0, 0, 255}, {30, 0, 0, 255}, {220, 0, 0, 255}, {60, 0, 0, 255}});
    const auto column = [&woven](bool top) {
        media::Picture field;
        fieldOf(woven, top, field);
        std::vector<int> values;
        for (int y = 0; y < field.height; ++y) {
            values.push_back(field.row(y)[0]);
        }
        return values;
    };
    EXPECT_EQ(column(true), (std::vector<int>{10, 20, 30, 45, 60}));
    EXPECT_EQ(column(false), (std::vector<int>{200, 200, 210, 220, 220})) << "nothing beyond its first and last line";
}

TEST(PictureScalingTest, ShowsWidePixelsAsSquares) {
    media::VideoFormat format;
    format.width = 720;
    format.height = 576;
    format.pixelAspect = {64, 45};
    EXPECT_EQ(shownSize(format), (Size{1024, 576}));
    EXPECT_EQ(shownSize(format, {512, 1000}), (Size{512, 288}));
    format.pixelAspect = {8, 9};
    EXPECT_EQ(shownSize(format), (Size{720, 648}));
    format.width = format.height = 1;
    EXPECT_EQ(shownSize(format, {1, 1}), (Size{1, 1}));
}

TEST(ExportSizesTest, AreTheClipsAndUsualSmallerOnesOfItsShape) {
    const struct {
        int width, height;
        media::Rational pixels;
        std::vector<Size> sizes;
    } kCases[] = {
        {1920, 1080, {1, 1}, {{1920, 1080}, {1280, 720}, {854, 480}, {640, 360}, {426, 240}}},
        {1080, 1920, {1, 1}, {{1080, 1920}, {720, 1280}, {480, 854}, {360, 640}, {240, 426}}},
        {720, 576, {16, 15}, {{720, 576}, {768, 576}, {640, 480}, {480, 360}, {320, 240}}},
        {320, 200, {1, 1}, {{320, 200}}},
    };
    for (const auto& each : kCases) {
        media::VideoFormat format;
        format.width = each.width;
        format.height = each.height;
        format.pixelAspect = each.pixels;
        EXPECT_EQ(exportSizes(format), each.sizes) << each.width;
    }
}

}  // namespace
}  // namespace lumiset::studio
