#include "apps/studio/core/look_edits.h"

#include <gtest/gtest.h>

#include "hostkit/look_json.h"
#include "hostkit/module.h"

namespace lumiset::studio {
namespace {

class LookEditsTest : public testing::Test {
protected:
    hostkit::Module module;
    hostkit::EffectCatalogue catalogue{module.effectLibrary()};
    const EffectDescription& outline = catalogue.effect("Outline");
    const ParameterDescription& width = outline.parameter("Width");
    LookEffect effect{"Outline", "Red Glow"};

    float widthAt(double seconds, double clipSeconds = 10.0) {
        return valueAt(outline, effect, width, {seconds, clipSeconds}).slider;
    }
    void setWidth(float value, double seconds = 0.0, double clipSeconds = 10.0) {
        ParamValue wanted{};
        wanted.slider = value;
        setValue(outline, effect, width, wanted, {seconds, clipSeconds});
    }
};

TEST_F(LookEditsTest, AValueOfThePresetLeavesNothingBehind) {
    const float preset = widthAt(0.0);
    EXPECT_TRUE(effect.parameters.empty());
    setWidth(0.75F, 3.0);
    EXPECT_EQ(effect.parameters.size(), 1U);
    EXPECT_EQ(widthAt(0.0), 0.75F) << "without keys a change counts for the whole clip";
    setWidth(preset);
    EXPECT_TRUE(effect.parameters.empty());
}

TEST_F(LookEditsTest, KeysAreSetMovedCopiedAndTakenOut) {
    setWidth(0.2F);
    toggleKey(outline, effect, width, {2.0, 10.0});
    EXPECT_EQ(keyStateAt(effect, width.index, {2.0, 10.0}), KeyState::kHere);
    EXPECT_EQ(keyStateAt(effect, width.index, {3.0, 10.0}), KeyState::kElsewhere);
    setWidth(0.6F, 6.0);  // makes a key of its own
    EXPECT_FLOAT_EQ(widthAt(4.0), 0.4F);
    EXPECT_EQ(keyTimes(effect, width.index, 10.0), (std::vector<double>{2.0, 6.0}));

    moveKey(effect, width.index, {6.0, 10.0}, 1.0, false);  // past the other one
    EXPECT_EQ(keyTimes(effect, width.index, 10.0), (std::vector<double>{1.0, 2.0}));
    EXPECT_EQ(widthAt(0.0), 0.6F);
    moveKey(effect, width.index, {1.0, 10.0}, 5.0, true);
    EXPECT_EQ(keyTimes(effect, std::nullopt, 10.0), (std::vector<double>{1.0, 2.0, 5.0}));
    moveKey(effect, width.index, {5.0, 10.0}, 2.0, false);  // onto another, in its place
    EXPECT_EQ(widthAt(2.0), 0.6F);
    setKeyValue(effect, width.index, {2.0, 10.0}, ParamValue{.slider = 0.9F});
    EXPECT_EQ(widthAt(9.0), 0.9F);

    toggleKey(outline, effect, width, {1.0, 10.0});
    toggleKey(outline, effect, width, {2.0, 10.0});
    EXPECT_EQ(keyStateAt(effect, width.index, {2.0, 10.0}), KeyState::kNone);
    EXPECT_EQ(widthAt(0.0), 0.9F) << "the last key's value stays";
}

TEST_F(LookEditsTest, KeysInPartsOfTheClipStayParts) {
    effect.of(width).keys.push_back({{50.0, true}, ParamValue{.slider = 0.1F}});
    setWidth(0.5F, 10.0);
    ASSERT_EQ(effect.parameters[0].keys.size(), 2U);
    EXPECT_TRUE(effect.parameters[0].keys[1].time.isPart);
    EXPECT_EQ(effect.parameters[0].keys[1].time.at, 100.0);
    EXPECT_FLOAT_EQ(widthAt(15.0, 20.0), 0.3F) << "of a longer clip";
    moveKey(effect, width.index, {5.0, 10.0}, 2.5, false);
    EXPECT_EQ(effect.parameters[0].keys[0].time.at, 25.0);
}

TEST_F(LookEditsTest, KnowsMaskViewsAndWhatAnEffectSees) {
    Look look = hostkit::lookFromJson(
        catalogue,
        R"({"lumilook": 1, "effects": [{"effect": "Outline"}, {"effect": "Selective Tint"}, {"effect": "Viewfinder"}]})",
        "");
    EXPECT_FALSE(showsMask(catalogue, look));
    const EffectDescription& tint = catalogue.effect("Selective Tint");
    setValue(tint, look.effects[1], tint.parameter("Test Mask"), ParamValue{.boolean = 1}, {});
    EXPECT_TRUE(showsMask(catalogue, look));
    look.effects[1].off = true;
    EXPECT_FALSE(showsMask(catalogue, look));
    EXPECT_EQ(inputOf(look, 1).effects.size(), 1U);
    ASSERT_EQ(without(look, 1).effects.size(), 2U);
    EXPECT_EQ(without(look, 1).effects[1].effect, "Viewfinder");
    EXPECT_EQ(valueText(catalogue.effect("Background Generator").parameter("Angle"), ParamValue{.slider = 0.25F}),
              "90°");
    EXPECT_EQ(valueText(width, ParamValue{.slider = 0.125F}), "12.5 %");
}

}  // namespace
}  // namespace lumiset::studio
