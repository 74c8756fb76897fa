// The module's front door, from the outside: names, flags and tables. What every module has to hold, as the identity
// and the lifetime of objects, is `lumiset validate`'s to check.

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>

#include "host/gpu_host.h"
#include "host/pixel_aspect_scale.h"
#include "tests/support/effect_tester.h"

namespace lumiset::test {
namespace {

TEST(Library, ListsItsEffectsByIndexUnderTheirNames) {
    const Held<IEffectLibrary> library(GetEffectsLibrary());
    EXPECT_STREQ(library->GetLibraryName(), "Vantrel Lumiset V");
    const struct {
        const char* name;
        std::uint32_t flags;
    } rows[] = {
        {"Progressive Stretch", 961}, {"Background Generator", 17349}, {"Outline", 965},      {"Selective Focus", 961},
        {"Selective Tint", 961},      {"Color Fixer Pro", 961},        {"Viewfinder", 17349}, {"Old TV", 17349},
        {"Selective Color", 961},     {"Alpha Processor", 965},
    };
    ASSERT_GE(effectCount(), std::size(rows));  // later effects stand behind these
    for (std::uint32_t index = 0; index < std::size(rows); ++index) {
        const Held<IVideoGPUEffect> effect(library->CreateEffect(index));
        EXPECT_STREQ(effect->GetEffectName(), rows[index].name);
        EXPECT_EQ(effect->GetEffectFlags(), rows[index].flags);
    }
    for (const std::uint32_t index : {effectCount(), effectCount() + 1, 0xFFFFFFFFU}) {
        EXPECT_EQ(library->CreateEffect(index), nullptr);
    }
    EXPECT_EQ(library->LibraryQuery(1, 2), 0U);
}

struct AskedHost final : ValueHost {
    Result LUMISET_CALL QueryInterface(const Guid& iid, void** out) noexcept override {
        wasAskedForGL |= iid == IHostGL::kId;
        return ValueHost::QueryInterface(iid, out);
    }
    bool wasAskedForGL = false;
};

TEST(HostServices, AreOneObjectThatKeepsOptionsForTheProcess) {
    const Held<IEffectLibrary> library(GetEffectsLibrary());
    IHostServices* services = library->GetHostServices();
    EXPECT_EQ(library->GetHostServices(), services);
    services->SetCropOverscan(true);
    EXPECT_TRUE(services->GetCropOverscan());
    EXPECT_FALSE(services->GetForcedCpu());
    for (const bool forced : {true, false}) {
        services->SetForcedCpu(forced);
        services->SetCropOverscan(!forced);
        AskedHost host;
        EXPECT_FALSE(EffectTester(0).effect().InitGPU(&host, nullptr, nullptr, 0));
        EXPECT_EQ(host.wasAskedForGL, !forced);
    }
    services->SetCropOverscan(false);
    services->Release();
    services->Release();
    services->Release();  // one more than was taken: the object stays
    EXPECT_FALSE(library->GetHostServices()->GetCropOverscan());
}

TEST(Effects, DescribeEveryParameterAndNoneBeyondTheLast) {
    for (std::uint32_t index = 0; index < effectCount(); ++index) {
        const EffectTester tester(index);
        IVideoGPUEffect& effect = tester.effect();
        SCOPED_TRACE(effect.GetEffectName());
        void* out = nullptr;
        ASSERT_EQ(effect.QueryInterface(IParamToolTip::kId, &out), kResultOk);
        const Held<IParamToolTip> tips(static_cast<IParamToolTip*>(out));
        const std::uint32_t count = tester.paramCount();
        bool open = false;
        for (std::uint32_t param = 0; param < count; ++param) {
            ParamInfo info;
            std::memset(&info, 0xEE, sizeof info);  // what a type does not use must come back as zeros
            ASSERT_TRUE(effect.GetParamInfo(param, &info));
            EXPECT_LT(std::strlen(info.label), sizeof info.label);
            EXPECT_EQ(info.visible, 1);
            EXPECT_EQ(reinterpret_cast<const std::uint8_t*>(&info)[275], 0);
            ASSERT_NE(tips->GetParamToolTip(param), nullptr);
            EXPECT_EQ(std::string(tips->GetParamToolTip(param)).empty(), info.type == kParamGroup) << param;
            if (info.type == kParamGroup) {
                EXPECT_EQ(info.groupEnd != 0, open) << "boxes do not nest";
                open = !open;
            }
            if (info.type == kParamSlider) {
                EXPECT_LT(info.minimum, info.slider.maximum);
                EXPECT_EQ(info.items[1][0], 0);
            }
        }
        ParamInfo info{};
        info.type = 77;
        EXPECT_FALSE(effect.GetParamInfo(count, &info));
        EXPECT_EQ(info.type, 77U);
        EXPECT_FALSE(effect.GetParamInfo(0, nullptr));
        EXPECT_EQ(tips->GetParamToolTip(count), nullptr);
    }
}

TEST(PixelAspect, ScalesLengthsBetweenSquareAndStoredPixels) {
    FrameRenderInfo info = frameInfo();
    info.pixelAspect = 2.0;
    EXPECT_EQ(PixelAspectScale(&info, false, false).aspect, 1.0F) << "the flag decides";
    EXPECT_EQ(PixelAspectScale(nullptr, true, false).aspect, 1.0F);

    info.flags = FrameRenderInfo::kHasPixelAspect;
    const PixelAspectScale wide(&info, false, false);
    EXPECT_TRUE(wide.hasAspect && wide.scaleAlongX);
    EXPECT_EQ(wide.fixedAspect, 2048);
    EXPECT_EQ(wide.ToStoredX(3.0F), 6.0F);
    EXPECT_EQ(wide.ToStoredY(3.0F), 3.0F);
    EXPECT_EQ(wide.FromStoredX(3.0F), 1.5F);
    EXPECT_EQ(wide.FromStoredY(3.0F), 3.0F);
    EXPECT_NEAR(wide.unitX, 2.0 / std::sqrt(5.0), 1e-6);
    EXPECT_NEAR(wide.unitY, 1.0 / std::sqrt(5.0), 1e-6);

    const PixelAspectScale inverted(&info, false, true);
    EXPECT_FALSE(inverted.scaleAlongX);
    EXPECT_EQ(inverted.ToStoredX(3.0F), 3.0F);
    EXPECT_EQ(inverted.ToStoredY(3.0F), 1.5F);
    EXPECT_EQ(inverted.FromStoredX(3.0F), 3.0F);
    EXPECT_EQ(inverted.FromStoredY(3.0F), 6.0F);

    info.pixelAspect = 0.5;
    info.field = 1;
    EXPECT_EQ(PixelAspectScale(&info, true, false).aspect, 1.0F) << "a field's rows are twice as far apart";
    const PixelAspectScale narrow(&info, false, true);
    EXPECT_TRUE(narrow.scaleAlongX) << "only wide pixels are inverted";
    EXPECT_NEAR(narrow.unitY / narrow.unitX, 2.0, 1e-6);

    for (const double bad : {0.0, -1.0, std::nan(""), HUGE_VAL}) {
        info.pixelAspect = bad;
        EXPECT_EQ(PixelAspectScale(&info, false, false).aspect, 1.0F) << bad;
    }
}

}  // namespace
}  // namespace lumiset::test
