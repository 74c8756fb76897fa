#include "frame/primitives/warp.h"

#include <array>
#include <cmath>
#include <numbers>

#include "tests/frame/operation_support.h"

namespace lumiset::test {
namespace {

constexpr std::int32_t kQuadFormats[] = {kFormatBgra8, kFormatArgb8, kFormatBgraFloat, kFormatArgbFloat};

ImgStatus warpQuad(const GuardedFrame& src, const ImgPixelRect& rect, GuardedFrame& dst, const ImgPoint* quad) {
    const Frame& s = src.frame;
    const Frame& d = dst.frame;
    const ImgSize srcSize{s.Width(), s.Height()};
    const ImgSize dstSize{d.Width(), d.Height()};
    const std::int32_t alpha = AlphaIndex(s.Format());
    if (isFloatFormat(s.Format())) {
        return ImgWarpQuadFC4(src.row<float>(0), s.Stride(), srcSize, rect, dst.row<float>(0), d.Stride(), quad, alpha,
                              dstSize);
    }
    return ImgWarpQuad8C4(s.Data(), s.Stride(), srcSize, rect, d.Data(), d.Stride(), quad, alpha, dstSize);
}

void clear(GuardedFrame& frame) {
    for (std::int32_t y = 0; y < frame.frame.Height(); ++y) {
        std::memset(frame.row<std::uint8_t>(y), 0,
                    static_cast<std::size_t>(frame.frame.Width() * frame.frame.BytesPerPixel()));
    }
}

/// The map of four points to four others, from the eight linear equations that define it.
class Homography {
public:
    Homography(const ImgPoint* from, const ImgPoint* to) {
        double m[8][9] = {};
        for (int i = 0; i < 4; ++i) {
            const auto [x, y] = from[i];
            const auto [u, v] = to[i];
            const double rows[2][9] = {{x, y, 1, 0, 0, 0, -u * x, -u * y, u}, {0, 0, 0, x, y, 1, -v * x, -v * y, v}};
            std::copy_n(rows[0], 9, m[2 * i]);
            std::copy_n(rows[1], 9, m[2 * i + 1]);
        }
        for (int i = 0; i < 8; ++i) {
            int pivot = i;
            for (int k = i + 1; k < 8; ++k) {
                pivot = std::abs(m[k][i]) > std::abs(m[pivot][i]) ? k : pivot;
            }
            std::swap_ranges(m[i], m[i] + 9, m[pivot]);
            for (int k = 0; k < 8; ++k) {
                const double factor = k == i ? 0 : m[k][i] / m[i][i];
                for (int j = 0; j < 9; ++j) {
                    m[k][j] -= factor * m[i][j];
                }
            }
        }
        for (int i = 0; i < 8; ++i) {
            h[i] = m[i][8] / m[i][i];
        }
    }
    [[nodiscard]] ImgPoint operator()(double x, double y) const {
        const double w = h[6] * x + h[7] * y + 1;
        return {(h[0] * x + h[1] * y + h[2]) / w, (h[3] * x + h[4] * y + h[5]) / w};
    }

private:
    double h[8];
};

/// Linear interpolation inside a rectangle.
double sampleLinear(const GuardedFrame& src, const ImgPixelRect& rect, ImgPoint at, std::int32_t channel) {
    const double x = std::clamp(at.x, static_cast<double>(rect.left), static_cast<double>(rect.right));
    const double y = std::clamp(at.y, static_cast<double>(rect.top), static_cast<double>(rect.bottom));
    const auto column = static_cast<std::int32_t>(x);
    const auto row = static_cast<std::int32_t>(y);
    const auto pixel = [&](std::int32_t i, std::int32_t j) {
        return sampleAt(src, std::min(j, rect.bottom), std::min(i, rect.right) * src.channels() + channel);
    };
    const double fx = x - column;
    const double fy = y - row;
    return (pixel(column, row) * (1 - fx) + pixel(column + 1, row) * fx) * (1 - fy) +
           (pixel(column, row + 1) * (1 - fx) + pixel(column + 1, row + 1) * fx) * fy;
}

/// Distances to the four sides, positive inside, of a quadrilateral whose corners run clockwise on the screen.
std::array<double, 4> distances(const ImgPoint* quad, double x, double y) {
    std::array<double, 4> result{};
    for (std::size_t i = 0; i < 4; ++i) {
        const ImgPoint& a = quad[i];
        const ImgPoint& b = quad[(i + 1) % 4];
        result[i] = ((b.x - a.x) * (y - a.y) - (b.y - a.y) * (x - a.x)) / std::hypot(b.x - a.x, b.y - a.y);
    }
    return result;
}

void quadMapsAsTold(std::int32_t format, const ImgPixelRect& rect, const ImgPoint* quad, std::mt19937& random) {
    GuardedFrame src(41, 33, format, 8);
    GuardedFrame dst(67, 53, format, 4);
    src.randomize(random);
    for (std::int32_t y = 0; y < 33; ++y) {  // a gap between transparent and opaque, so that coverage shows
        for (std::int32_t x = 0; x < 41; ++x) {
            setSample(src, y, x * 4 + AlphaIndex(format), fullScale(format) * 0.8);
        }
    }
    clear(dst);
    ASSERT_EQ(warpQuad(src, rect, dst, quad), kImgOk);
    EXPECT_TRUE(dst.guardsIntact());
    const double left = rect.left;
    const double top = rect.top;
    const double right = rect.right;
    const double bottom = rect.bottom;
    const ImgPoint corners[4] = {{left, top}, {right, top}, {right, bottom}, {left, bottom}};
    const Homography toSource(quad, corners);
    const bool isFloat = isFloatFormat(format);
    int checked = 0;
    for (std::int32_t y = 0; y < 53; ++y) {
        for (std::int32_t x = 0; x < 67; ++x) {
            const auto sides = distances(quad, x, y);
            double nearest = *std::min_element(sides.begin(), sides.end());
            // Sharp corners are cut off a pixel outside the corner itself.
            const auto [minX, maxX] = std::minmax({quad[0].x, quad[1].x, quad[2].x, quad[3].x});
            const auto [minY, maxY] = std::minmax({quad[0].y, quad[1].y, quad[2].y, quad[3].y});
            nearest = std::min({nearest, x - minX, maxX - x, y - minY, maxY - y});
            if (std::any_of(sides.begin(), sides.end(), [](double d) { return std::abs(d + 1) < 0.01; })) {
                continue;  // just about untouched
            }
            double coverage = 1;
            for (const double d : sides) {
                coverage *= std::clamp(1 + d, 0.0, 1.0);
            }
            if (!isFloat && nearest > -1 && coverage * 0.8 * 255 < 1) {
                continue;  // an alpha of 0 shows nothing
            }
            const ImgPoint at = toSource(x, y);
            for (std::int32_t c = 0; c < 4; ++c) {
                double expected = nearest <= -1 ? 0 : sampleLinear(src, rect, at, c);
                expected *= c == AlphaIndex(format) ? coverage : 1;
                const double error = std::abs(sampleAt(dst, y, x * 4 + c) - expected);
                ASSERT_TRUE(error <= (isFloat ? 2e-3 : 1.1))
                    << "format " << format << ", pixel " << x << ", " << y << ", sample " << c << ": "
                    << sampleAt(dst, y, x * 4 + c) << ", expected " << expected << ", distance " << nearest;
                ++checked;
            }
        }
    }
    EXPECT_GT(checked, 10000);
}

TEST(WarpQuad, MapsTheRectangleProjectivelyAndFadesItsBorder) {
    const ImgPoint quads[][4] = {{{10.3, 5.2}, {60.1, 9.7}, {50.6, 48.2}, {14.9, 40.4}},
                                 {{-20, -10}, {90.5, 3}, {70, 60.25}, {-5, 80}},             // larger than the target
                                 {{20, 10}, {28, 8.5}, {28, 44.5}, {20, 43}},                // an upright strip
                                 {{5.4, 30}, {60.4, 30}, {58.2, 38}, {9.9, 38}},             // a lying strip
                                 {{33.2, 20.1}, {33.9, 20.4}, {33.6, 21.2}, {33.1, 20.9}}};  // smaller than a pixel
    onEveryInstructionSet([&] {
        std::mt19937 random(1);
        for (const std::int32_t format : kQuadFormats) {
            for (const auto& quad : quads) {
                quadMapsAsTold(format, {0, 0, 40, 32}, quad, random);
                quadMapsAsTold(format, {7, 3, 15, 32}, quad, random);
                if (testing::Test::HasFatalFailure()) {
                    return;
                }
            }
        }
    });
}

TEST(WarpQuad, OfStripsThatStayInPlaceIsACopy) {
    std::mt19937 random(2);
    onEveryInstructionSet([&] {
        for (const std::int32_t format : kQuadFormats) {
            for (const auto& [width, height] : {std::pair{2, 2}, {16, 16}, {70, 31}, {33, 69}}) {
                GuardedFrame src(width, height, format);
                src.randomize(random);
                for (const bool upright : {true, false}) {
                    GuardedFrame dst(width, height, format, 8);
                    clear(dst);
                    const std::int32_t length = upright ? width : height;
                    for (std::int32_t at = 0; at + 1 < length; at += 8) {
                        const std::int32_t end = std::min(at + 8, length - 1);
                        const ImgPixelRect rect =
                            upright ? ImgPixelRect{at, 0, end, height - 1} : ImgPixelRect{0, at, width - 1, end};
                        const double l = rect.left;
                        const double t = rect.top;
                        const double r = rect.right;
                        const double b = rect.bottom;
                        const ImgPoint quad[4] = {{l, t}, {r, t}, {r, b}, {l, b}};
                        ASSERT_EQ(warpQuad(src, rect, dst, quad), kImgOk);
                    }
                    EXPECT_TRUE(framesAgree(dst, src)) << width << " x " << height << ", format " << format;
                }
            }
        }
    });
}

TEST(WarpQuad, JoinsBentStripsWithoutGapsOrLines) {
    constexpr std::int32_t kWidth = 67;
    constexpr std::int32_t kHeight = 50;
    for (const std::int32_t alpha : {255, 100}) {
        for (const double lean : {0.0, 3.3}) {  // slanted sides, too
            GuardedFrame src(kWidth, kHeight, kFormatBgra8);
            GuardedFrame dst(kWidth, kHeight, kFormatBgra8);
            for (std::int32_t y = 0; y < kHeight; ++y) {
                for (std::int32_t x = 0; x < kWidth * 4; ++x) {
                    setSample(src, y, x, x % 4 == 3 ? alpha : 200);
                }
            }
            clear(dst);
            const auto top = [](double x) { return 9 - 9 * std::sin(std::numbers::pi * x / kWidth); };
            for (std::int32_t x = 0; x + 1 < kWidth; x += 8) {
                const std::int32_t end = std::min(x + 8, kWidth - 1);
                const double l = x;
                const double r = end;
                const ImgPoint quad[4] = {
                    {l, top(l)}, {r, top(r)}, {r + lean, kHeight - 1 - top(r)}, {l + lean, kHeight - 1 - top(l)}};
                ASSERT_EQ(warpQuad(src, {x, 0, end, kHeight - 1}, dst, quad), kImgOk);
            }
            for (std::int32_t x = 4; x < kWidth - 1; ++x) {
                // Between the strip's ends the edge is straight, up to a pixel inside the curve.
                for (std::int32_t y = 0; y < kHeight; ++y) {
                    const double inside = std::min(y - top(x), kHeight - 1 - top(x) - y);
                    if (inside >= 1.5) {
                        ASSERT_EQ(sampleAt(dst, y, x * 4 + 3), alpha) << x << ", " << y;
                        ASSERT_EQ(sampleAt(dst, y, x * 4), 200) << x << ", " << y;
                    } else if (inside < -1.5 && lean == 0) {
                        ASSERT_EQ(sampleAt(dst, y, x * 4 + 3), 0) << x << ", " << y;
                    }
                }
            }
        }
    }
}

TEST(WarpQuad, ScalesAlphaWherePixelsArePartlyCovered) {
    GuardedFrame src(3, 3, kFormatArgb8);
    GuardedFrame dst(7, 6, kFormatArgb8);
    for (std::int32_t y = 0; y < 3; ++y) {
        for (std::int32_t i = 0; i < 12; ++i) {
            setSample(src, y, i, i % 4 == 0 ? 200 : 40 + i % 4);
        }
    }
    clear(dst);
    const ImgPoint quad[4] = {{2, 1.5}, {4, 1.5}, {4, 3.25}, {2, 3.25}};
    ASSERT_EQ(warpQuad(src, {0, 0, 2, 2}, dst, quad), kImgOk);
    const double column[6] = {0, 100, 200, 200, 50, 0};  // rows 1 and 4: 1/2 and 3/4 of a pixel outside
    for (std::int32_t y = 0; y < 6; ++y) {
        for (std::int32_t x = 0; x < 7; ++x) {
            EXPECT_EQ(sampleAt(dst, y, x * 4), x >= 2 && x <= 4 ? column[y] : 0) << x << ", " << y;
        }
    }
    EXPECT_EQ(sampleAt(dst, 1, 2 * 4 + 3), 43);  // the colour stays whole
    setSample(dst, 1, 8, 130);                   // what is there is covered more
    setSample(dst, 1, 9, 99);
    ASSERT_EQ(warpQuad(src, {0, 0, 2, 2}, dst, quad), kImgOk);
    EXPECT_EQ(sampleAt(dst, 1, 8), 130);
    EXPECT_EQ(sampleAt(dst, 1, 9), 99);
}

TEST(WarpQuad, DrawsNothingWithoutAreaAndRefusesWhatIsNoQuad) {
    GuardedFrame src(9, 9, kFormatBgra8);
    GuardedFrame dst(9, 9, kFormatBgra8);
    std::mt19937 random(3);
    src.randomize(random);
    dst.randomize(random);
    const auto before = dst.bytes();
    const ImgPixelRect all{0, 0, 8, 8};
    const ImgPoint square[4] = {{0, 0}, {8, 0}, {8, 8}, {0, 8}};
    const ImgPoint line[4] = {{3, 0}, {3, 0}, {3, 8}, {3, 8}};
    EXPECT_EQ(warpQuad(src, all, dst, line), kImgOk);
    EXPECT_EQ(warpQuad(src, {4, 0, 4, 8}, dst, square), kImgOk);
    EXPECT_EQ(dst.bytes(), before);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const ImgPoint bad[][4] = {{{0, 0}, {8, 8}, {8, 0}, {0, 8}},  // crosses itself
                               {{0, 0}, {8, 0}, {2, 2}, {0, 8}},  // a corner points inwards
                               {{0, 0}, {4, 4}, {8, 8}, {0, 8}},  // three corners on a line
                               {{0, 0}, {8, 0}, {8, nan}, {0, 8}},
                               {{0, 0}, {HUGE_VAL, 0}, {8, 8}, {0, 8}}};
    for (const auto& quad : bad) {
        EXPECT_EQ(warpQuad(src, all, dst, quad), kImgBadRange);
    }
    for (const ImgPixelRect& rect : {ImgPixelRect{-1, 0, 8, 8}, {0, 0, 9, 8}, {0, 0, 8, 9}, {5, 0, 4, 8}}) {
        EXPECT_EQ(warpQuad(src, rect, dst, square), kImgBadRange);
    }
    const std::uint8_t* s = src.frame.Data();
    std::uint8_t* d = dst.frame.Data();
    EXPECT_EQ(ImgWarpQuad8C4(s, 40, {9, 9}, all, d, 40, square, 1, {9, 9}), kImgBadRange);
    EXPECT_EQ(ImgWarpQuad8C4(s, 40, {9, 9}, all, d, 40, nullptr, 3, {9, 9}), kImgNullPointer);
    EXPECT_EQ(ImgWarpQuad8C4(nullptr, 40, {9, 9}, all, d, 40, square, 3, {9, 9}), kImgNullPointer);
    EXPECT_EQ(ImgWarpQuad8C4(s, 35, {9, 9}, all, d, 40, square, 3, {9, 9}), kImgBadStep);
    EXPECT_EQ(ImgWarpQuad8C4(s, 40, {9, 9}, all, d, 35, square, 3, {9, 9}), kImgBadStep);
    EXPECT_EQ(ImgWarpQuad8C4(s, 40, {9, 9}, all, d, 40, square, 3, {0, 9}), kImgBadSize);
    EXPECT_EQ(dst.bytes(), before);
}

TEST(WarpAffine, SamplesWithinTheSourceAndBlendsItsEdge) {
    const double matrix[2][3] = {{0.9, -0.6, 20.2}, {0.7, 1.1, -3.4}};
    const double det = 0.9 * 1.1 + 0.6 * 0.7;
    onEveryInstructionSet([&] {
        std::mt19937 random(4);
        for (const std::int32_t format :
             {static_cast<std::int32_t>(kFormatBgra8), static_cast<std::int32_t>(kFormatMask8)}) {
            for (const std::uint32_t code : {std::uint32_t{kImgNearest}, std::uint32_t{kImgLinear}, 0x80000002U}) {
                GuardedFrame src(31, 27, format);
                GuardedFrame dst(53, 47, format);
                src.randomize(random);
                dst.randomize(random);
                GuardedFrame before(53, 47, format);
                before.restore(dst.bytes());
                const auto warp = format == kFormatMask8 ? ImgWarpAffine8C1 : ImgWarpAffine8C4;
                ASSERT_EQ(warp(src.frame.Data(), src.frame.Stride(), {31, 27}, dst.frame.Data(), dst.frame.Stride(),
                               matrix, code, {53, 47}),
                          kImgOk);
                EXPECT_TRUE(dst.guardsIntact());
                for (std::int32_t y = 0; y < 47; ++y) {
                    for (std::int32_t i = 0; i < dst.samplesPerRow(); ++i) {
                        const std::int32_t x = i / dst.channels();
                        const ImgPoint at{(1.1 * (x - 20.2) + 0.6 * (y + 3.4)) / det,
                                          (0.9 * (y + 3.4) - 0.7 * (x - 20.2)) / det};
                        // Lengths in the target of one step in the source's directions.
                        const double alongX = det / std::hypot(1.1, 0.6);
                        const double alongY = det / std::hypot(0.9, 0.7);
                        const double sides[4] = {at.x * alongX, (30 - at.x) * alongX, at.y * alongY,
                                                 (26 - at.y) * alongY};
                        double coverage = 1;
                        for (const double d : sides) {
                            coverage *= std::clamp(1 + d, 0.0, 1.0);
                        }
                        const bool inside = coverage >= 1;
                        const ImgPoint sampled =
                            code == kImgNearest ? ImgPoint{std::floor(at.x + 0.5), std::floor(at.y + 0.5)} : at;
                        const double value = sampleLinear(src, {0, 0, 30, 26}, sampled, i % dst.channels());
                        const double old = sampleAt(before, y, i);
                        const double share = (code & kImgSmoothEdge) != 0 ? coverage : inside ? 1 : 0;
                        const double error = std::abs(sampleAt(dst, y, i) - (value * share + old * (1 - share)));
                        ASSERT_TRUE(error <= 1.1) << "code " << code << ", " << x << ", " << y;
                    }
                }
            }
        }
    });
}

TEST(WarpAffine, RefusesWhatItCannotInvert) {
    std::uint8_t src[16] = {};
    std::uint8_t dst[16] = {};
    const double flat[2][3] = {{1, 2, 0}, {2, 4, 0}};
    const double same[2][3] = {{1, 0, 0}, {0, 1, 0}};
    EXPECT_EQ(ImgWarpAffine8C1(src, 4, {4, 4}, dst, 4, flat, kImgLinear, {4, 4}), kImgBadRange);
    EXPECT_EQ(ImgWarpAffine8C1(src, 4, {4, 4}, dst, 4, same, 3, {4, 4}), kImgBadRange);
    EXPECT_EQ(ImgWarpAffine8C1(src, 4, {4, 4}, dst, 4, same, kImgCubic, {4, 4}), kImgBadRange);
    EXPECT_EQ(ImgWarpAffine8C1(src, 4, {4, 4}, dst, 4, nullptr, kImgLinear, {4, 4}), kImgNullPointer);
    EXPECT_EQ(ImgWarpAffine8C4(src, 4, {1, 4}, dst, 3, same, kImgLinear, {1, 4}), kImgBadStep);
}

TEST(Warp, IsTheSameOnEveryInstructionSet) {
    std::mt19937 random(5);
    const ImgPoint quad[4] = {{10.3, 5.2}, {60.1, 9.7}, {50.6, 48.2}, {14.9, 40.4}};
    for (const std::int32_t format : kQuadFormats) {
        GuardedFrame src(41, 33, format);
        src.randomize(random);
        std::vector<std::uint8_t> first;
        onEveryInstructionSet([&] {
            GuardedFrame dst(67, 53, format);
            clear(dst);
            ASSERT_EQ(warpQuad(src, {0, 0, 40, 32}, dst, quad), kImgOk);
            first = first.empty() ? dst.bytes() : first;
            EXPECT_EQ(dst.bytes(), first) << "format " << format;
        });
    }
}

}  // namespace
}  // namespace lumiset::test
