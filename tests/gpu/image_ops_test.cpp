// Operations of several passes on a real OpenGL, against the shapes that they stand for.

#include <cmath>
#include <vector>

#include "effects/gpu_image_ops.h"
#include "tests/effects/gl_host_fixture.h"
#include "tests/support/picture.h"

namespace lumiset::test {
namespace {

class Helper final : public GPUHelper {
public:
    [[nodiscard]] bool start(GPUResources& resources, IHostGL& gl) {
        if (!loadCore()) {
            return false;
        }
        Bind(&resources, &gl);
        return true;
    }
};

enum Program : std::size_t { kDilateEllipse, kDilateRing, kErodeEllipse, kErodeRing, kCopy };

class EllipseOnGPU : public WithGL {
protected:
    /// The picture grown or shrunk by an ellipse.
    Picture grown(Picture& source, EllipseSize size, bool erode) {
        Picture result(source.width(), source.height());
        Helper helper;
        if (!helper.start(gl(), gl())) {
            ADD_FAILURE() << "no drawing functions";
            return result;
        }
        GPUTexture from = gl().makeTexture(source.width(), source.height(), kFormatBgra8);
        GPUTexture to = gl().makeTexture(source.width(), source.height(), kFormatBgra8);
        gl().upload(source.desc(), from);
        {
            constexpr auto kPrograms = std::to_array<GPUProgramSource>({kDilateEllipseProgram,
                                                                        kDilateRingProgram,
                                                                        kErodeEllipseProgram,
                                                                        kErodeRingProgram,
                                                                        {shaders::kPassVert, shaders::kPlainCopyFrag}});
            GPUFrame frame(helper, from, to, false);
            EXPECT_TRUE(frame.create(2, kPrograms));
            PicturePasses mask(frame);
            mask.take(kCopy);
            growByEllipse(mask, erode ? kErodeEllipse : kDilateEllipse, erode ? kErodeRing : kDilateRing, size);
            EXPECT_TRUE(frame.finish(mask.picture()));
        }
        helper.Bind(nullptr, nullptr);
        gl().download(to, result.desc());
        gl().ReleaseTexture(&from);
        gl().ReleaseTexture(&to);
        return result;
    }

    static void setAll(Picture& picture, std::int32_t x, std::int32_t y, double value) {
        picture.setPixel(x, y, value, value, value, value);
    }
};

/// Whether an elliptical mask anchored at its middle has the element at (x, y) from there.
bool inEllipse(EllipseSize size, double x, double y) {
    const double ax = size.width / 2;
    const double ay = size.height / 2;
    return x < size.width - ax && y < size.height - ay && x * x / (ax * ax) + y * y / (ay * ay) <= 1.0;
}

TEST_F(EllipseOnGPU, IsExactUpToTwentyFiveTexels) {
    for (const EllipseSize size : {EllipseSize{25, 25}, {24, 24}, {2, 2}, {3, 3}, {7, 4}, {25, 12}, {5, 20}}) {
        for (const bool erode : {false, true}) {
            SCOPED_TRACE(::testing::Message() << size.width << " by " << size.height << (erode ? " erosion" : ""));
            // Points in the middle and near every edge, so that what lies outside the picture matters.
            Picture source(67, 53);
            const double ground = erode ? 255.0 : 0.0;
            for (std::int32_t y = 0; y < source.height(); ++y) {
                for (std::int32_t x = 0; x < source.width(); ++x) {
                    const bool point = (x * 7 + y * 31) % 389 == 3 || (x == 1 && y == 20) || (x == 65 && y == 51);
                    setAll(source, x, y, point ? 90.0 + x : ground);
                }
            }
            const Picture result = grown(source, size, erode);
            std::int32_t wrong = 0;
            for (std::int32_t y = 0; y < source.height(); ++y) {
                for (std::int32_t x = 0; x < source.width(); ++x) {
                    double expected = ground;
                    for (std::int32_t dy = -size.height; dy <= size.height; ++dy) {
                        for (std::int32_t dx = -size.width; dx <= size.width; ++dx) {
                            if (inEllipse(size, dx, dy)) {
                                const double texel = source.get(std::clamp(x + dx, 0, source.width() - 1),
                                                                std::clamp(y + dy, 0, source.height() - 1), kAlpha);
                                expected = erode ? std::min(expected, texel) : std::max(expected, texel);
                            }
                        }
                    }
                    wrong += result.get(x, y, kAlpha) != expected ? 1 : 0;
                }
            }
            EXPECT_EQ(wrong, 0);
        }
    }
}

TEST_F(EllipseOnGPU, StaysWithinATexelOfLargeEllipses) {
    for (const EllipseSize size :
         {EllipseSize{27, 27}, {30, 30}, {45, 45}, {60, 60}, {64, 64}, {100, 50}, {192, 192}, {192, 96}, {301, 301}}) {
        SCOPED_TRACE(::testing::Message() << size.width << " by " << size.height);
        const std::int32_t middleX = size.width / 2 + 4;
        const std::int32_t middleY = size.height / 2 + 4;
        Picture source(size.width + 9, size.height + 9);
        setAll(source, middleX, middleY, 255.0);
        const Picture result = grown(source, size, false);
        double farthest = 0.0;
        for (std::int32_t y = 0; y < source.height(); ++y) {
            for (std::int32_t x = 0; x < source.width(); ++x) {
                // A point grows into the mask turned about its anchor.
                const double dx = middleX - x;
                const double dy = middleY - y;
                if ((result.get(x, y, kAlpha) > 0.0) != inEllipse(size, dx, dy)) {
                    const double from = std::hypot(dx / (size.width / 2), dy / (size.height / 2));
                    farthest = std::max(farthest, std::abs(1.0 - 1.0 / from) * std::hypot(dx, dy));
                }
            }
        }
        EXPECT_LE(farthest, 1.1);
    }
}

TEST_F(EllipseOnGPU, OfOneTexelChangesNothing) {
    for (const EllipseSize size : {EllipseSize{1, 1}, {1, 9}, {9, 1}}) {
        Picture source(20, 10);
        setAll(source, 4, 5, 200.0);
        setAll(source, 19, 0, 77.0);
        EXPECT_EQ(grown(source, size, false).bytes(), source.bytes());
    }
}

}  // namespace
}  // namespace lumiset::test
