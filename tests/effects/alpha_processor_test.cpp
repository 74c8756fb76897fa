// Alpha Processor, rendered through the module's exports, against small masks worked out by hand.

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "tests/effects/alpha_rows.h"
#include "tests/support/effect_tester.h"

namespace lumiset::test {
namespace {

enum Param : std::uint32_t { kGrow, kBlur, kInvert, kPremultiply, kTestMask };

class AlphaProcessorTest : public ::testing::TestWithParam<std::int32_t> {
protected:
    static ValueHost hostWith(float grow, float blur) {
        ValueHost host;
        host.values[kGrow].slider = grow;
        host.values[kBlur].slider = blur;
        return host;
    }
    static ValueHost switchedOn(Param which) {
        ValueHost host = hostWith(0.5F, 0.0F);
        host.values[which].boolean = 1;
        return host;
    }

    /// White, and opaque in a rectangle alone.
    Picture block(std::int32_t width, std::int32_t height, std::int32_t left, std::int32_t top, std::int32_t columns,
                  std::int32_t rows) const {
        Picture picture(width, height, {.format = GetParam()});
        for (std::int32_t y = 0; y < height; ++y) {
            for (std::int32_t x = 0; x < width; ++x) {
                const bool inside = x >= left && x < left + columns && y >= top && y < top + rows;
                picture.setPixel(x, y, 255, 255, 255, inside ? 255 : 0);
            }
        }
        return picture;
    }
    Picture rendered(ValueHost host, Picture& source, const FrameRenderInfo* info = nullptr) const {
        Picture result(source.width(), source.height(), source.storage());
        EXPECT_TRUE(m_effect.render(host, source, result, info));
        return result;
    }

    const EffectTester m_effect{9};
};

/// Opaque pixels in the middle row and column.
struct Extent {
    int columns = 0;
    int rows = 0;
};
Extent extentOf(const Picture& picture) {
    Extent extent;
    for (std::int32_t x = 0; x < picture.width(); ++x) {
        extent.columns += picture.get(x, picture.height() / 2, kAlpha) > 254.0 ? 1 : 0;
    }
    for (std::int32_t y = 0; y < picture.height(); ++y) {
        extent.rows += picture.get(picture.width() / 2, y, kAlpha) > 254.0 ? 1 : 0;
    }
    return extent;
}

TEST_P(AlphaProcessorTest, GivesTheSourceWhereNothingIsAskedFor) {
    Picture source(50, 40, {.format = GetParam()});
    drawTestCard(source);
    EXPECT_EQ(rendered(hostWith(0.5F, 0.0F), source).bytes(), source.bytes());
    EXPECT_EQ(rendered(m_effect.presetHost("Reset to None"), source).bytes(), source.bytes());
    // An erosion by less than a pixel is none.
    EXPECT_EQ(rendered(hostWith(0.49F, 0.0F), source).bytes(), source.bytes());
}

TEST_P(AlphaProcessorTest, GrowsByAnEllipseOfAShareOfTheWidth) {
    Picture source = block(32, 20, 16, 10, 1, 1);
    const Picture result = rendered(hostWith(1.0F, 0.0F), source);  // 3.2 pixels
    const Rows plus = {{0, 0, 0, 0, 0}, {0, 0, 255, 0, 0}, {0, 255, 255, 255, 0}, {0, 0, 255, 0, 0}, {0, 0, 0, 0, 0}};
    EXPECT_EQ(alphaOf(result, 14, 8, 5, 5), plus);
    EXPECT_EQ(result.get(15, 10, kRed), 255.0) << "colours stay";
}

TEST_P(AlphaProcessorTest, ShrinksByAnEllipseOfAShareOfTheHeight) {
    Picture source = block(60, 32, 10, 10, 5, 4);
    const Picture result = rendered(hostWith(0.0F, 0.0F), source);  // 3.2 pixels
    const Rows core = {{0, 0, 0, 0, 0}, {0, 255, 255, 255, 0}, {0, 255, 255, 255, 0}, {0, 0, 0, 0, 0}};
    EXPECT_EQ(alphaOf(result, 10, 10, 5, 4), core);
}

TEST_P(AlphaProcessorTest, MeasuresFieldsAndWidePixelsAsTheirStoredRowsAre) {
    FrameRenderInfo field = frameInfo();
    field.flags = FrameRenderInfo::kHasField;
    field.field = 1;
    FrameRenderInfo wide = frameInfo();
    wide.flags = FrameRenderInfo::kHasPixelAspect;
    wide.pixelAspect = 3.0;
    struct Case {
        float grow;
        const FrameRenderInfo* info;
        int columns, rows;
    };
    // From a block of 31 by 31 in a frame of 96 by 80: by 9.6 pixels at the most to grow, by 8 to shrink. An even
    // ellipse lacks its last column or row.
    for (const Case& c : {Case{1.0F, nullptr, 39, 39}, Case{1.0F, &field, 39, 34}, Case{1.0F, &wide, 39, 33},
                          Case{0.0F, nullptr, 24, 24}, Case{0.0F, &field, 16, 24}, Case{0.0F, &wide, 8, 24}}) {
        Picture source = block(96, 80, 33, 25, 31, 31);
        const Extent extent = extentOf(rendered(hostWith(c.grow, 0.0F), source, c.info));
        EXPECT_EQ(extent.columns, c.columns) << c.grow << " field " << (c.info == &field);
        EXPECT_EQ(extent.rows, c.rows) << c.grow << " field " << (c.info == &field);
    }
}

TEST_P(AlphaProcessorTest, SoftensByThreePixelsAtLeast) {
    Picture source = block(20, 20, 10, 10, 1, 1);
    const Rows triangle = {{0, 0, 0, 0, 0}, {0, 16, 32, 16, 0}, {0, 32, 64, 32, 0}, {0, 16, 32, 16, 0}};
    EXPECT_EQ(alphaOf(rendered(hostWith(0.5F, 0.001F), source), 8, 8, 5, 4), triangle);
    EXPECT_EQ(alphaOf(rendered(hostWith(0.5F, 0.0001F), source), 10, 10, 1, 1), Rows{{255}});
}

TEST_P(AlphaProcessorTest, SoftensByATenthOfTheHeightAtMost) {
    Picture source = block(120, 100, 40, 0, 40, 100);
    const Picture result = rendered(hostWith(0.5F, 1.0F), source);
    int soft = 0;
    for (std::int32_t x = 0; x < 120; ++x) {
        const double alpha = result.get(x, 50, kAlpha);
        soft += alpha > 0.5 && alpha < 254.5 ? 1 : 0;
    }
    EXPECT_EQ(soft, 2 * (10 - 1)) << "a filter of ten columns at both sides";
}

TEST_P(AlphaProcessorTest, InvertsPremultipliesAndShowsTheMask) {
    Picture source(3, 1, {.format = GetParam()});
    source.setPixel(1, 0, 200, 100, 50, 128);
    source.setPixel(2, 0, 200, 100, 50, 255);

    const Picture inverted = rendered(switchedOn(kInvert), source);
    EXPECT_EQ(alphaOf(inverted, 0, 0, 3, 1), (Rows{{255, 127, 0}}));
    EXPECT_NEAR(inverted.get(1, 0, kRed), 200.0, 1e-4);

    const Picture premultiplied = rendered(switchedOn(kPremultiply), source);
    EXPECT_EQ(alphaOf(premultiplied, 0, 0, 3, 1), (Rows{{0, 128, 255}}));
    EXPECT_NEAR(premultiplied.get(1, 0, kRed), 100.39, 0.4);
    EXPECT_NEAR(premultiplied.get(1, 0, kBlue), 25.1, 0.11);
    EXPECT_NEAR(premultiplied.get(2, 0, kGreen), 100.0, 1e-4);

    const Picture mask = rendered(switchedOn(kTestMask), source);
    EXPECT_EQ(alphaOf(mask, 0, 0, 3, 1), (Rows{{255, 255, 255}}));
    for (const Channel channel : {kRed, kGreen, kBlue}) {
        EXPECT_NEAR(mask.get(1, 0, channel), 128.0, 1e-4);
    }

    // Only the lowest byte of a switch counts.
    ValueHost host = hostWith(0.5F, 0.0F);
    host.values[kInvert].words[0] = 0xFFFFFF00U;
    EXPECT_EQ(alphaOf(rendered(host, source), 0, 0, 3, 1), (Rows{{0, 128, 255}}));
}

INSTANTIATE_TEST_SUITE_P(Formats, AlphaProcessorTest,
                         ::testing::Values(kFormatBgra8, kFormatArgb8, kFormatBgraFloat, kFormatArgbFloat));

TEST(AlphaProcessor, IsHandedOutAsAnEffectAlthoughAnotherBaseComesFirst) {
    const EffectTester tester(9);
    IVideoGPUEffect& effect = tester.effect();
    EXPECT_STREQ(effect.GetEffectName(), "Alpha Processor");
    EXPECT_EQ(effect.GetEffectFlags(), 965U);
    for (const Guid& iid : {IUnknown::kId, IVideoEffect::kId, IVideoGPUEffect::kId}) {
        void* same = nullptr;
        ASSERT_EQ(effect.QueryInterface(iid, &same), kResultOk);
        EXPECT_EQ(same, &effect);
        effect.Release();
    }
    void* tips = nullptr;
    ASSERT_EQ(effect.QueryInterface(IParamToolTip::kId, &tips), kResultOk);
    EXPECT_STREQ(static_cast<IParamToolTip*>(tips)->GetParamToolTip(2), "Inverts the alpha mask");
    static_cast<IParamToolTip*>(tips)->Release();
}

}  // namespace
}  // namespace lumiset::test
