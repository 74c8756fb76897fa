#include <cctype>
#include <cmath>
#include <limits>
#include <set>

#include "adapters/frei0r/parameter_list.h"
#include "hostkit/preset_file.h"
#include "tests/frei0r/frei0r_host.h"

namespace lumiset::frei0r {
namespace {

using hostkit::EffectDescription;
using hostkit::ParameterStore;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

/// Runs the check for every effect and its plug-in.
template <class Check>
void forEachPlugin(const Check& check) {
    ASSERT_FALSE(reference().catalogue.effects().empty());
    for (const EffectDescription& effect : reference().catalogue.effects()) {
        SCOPED_TRACE(effect.name);
        check(effect, PluginFile(pluginPath(pluginName(effect.name))));
    }
}

/// The name as hosts make an identifier of it.
std::string reduced(const std::string& name) {
    std::string letters;
    for (const char c : name) {
        letters += std::isalnum(static_cast<unsigned char>(c)) != 0
                       ? static_cast<char>(std::tolower(static_cast<unsigned char>(c)))
                       : '-';
    }
    return letters;
}

TEST(Plugins, TellWhatHostsNeedToKnow) {
    forEachPlugin([](const EffectDescription& effect, const PluginFile& file) {
        const Frei0rPluginInfo info = file.info();
        EXPECT_EQ(info.name, pluginName(effect.name));
        EXPECT_EQ(info.pluginType, 0) << "a filter";
        EXPECT_EQ(info.colorModel, 0) << "blue, green, red, alpha";
        EXPECT_EQ(info.frei0rVersion, 1);
        EXPECT_NE(std::string(info.explanation).find(effect.name), std::string::npos);
        ASSERT_GT(info.parameterCount, 3);
        std::set<std::string> names;
        for (int i = 0; i < info.parameterCount; ++i) {
            const Frei0rParamInfo parameter = file.parameter(i);
            EXPECT_TRUE(names.insert(reduced(parameter.name)).second) << parameter.name << " is there twice";
            EXPECT_STRNE(parameter.explanation, "") << parameter.name;
            EXPECT_NE(parameter.type, kFrei0rPosition) << parameter.name;
        }
        EXPECT_EQ(names.count("name") + names.count("parent") + names.count("qos"), 0U) << "GStreamer's own";
        EXPECT_STREQ(file.parameter(0).name, "Preset");
        EXPECT_STREQ(file.parameter(info.parameterCount - 3).name, "Pixel Aspect");
        EXPECT_STREQ(file.parameter(info.parameterCount - 2).name, "Fields");
        EXPECT_STREQ(file.parameter(info.parameterCount - 1).name, "Padding");
    });
}

// Projects that people have saved name parameters and count them: these stay as they are.
TEST(Plugins, TellLabelsThatOccurTwiceApart) {
    const PluginFile oldTv(pluginPath("lumiset_old_tv"));
    EXPECT_EQ(oldTv.find("Noise"), 1);
    EXPECT_EQ(oldTv.find("Tint Color"), 3);
    EXPECT_EQ(oldTv.parameter(3).type, kFrei0rColor);
    EXPECT_EQ(oldTv.find("Tint"), 4);
    const PluginFile tint(pluginPath("lumiset_selective_tint"));
    EXPECT_EQ(tint.find("Top Left X"), 1);
    EXPECT_EQ(tint.find("Top Left Y"), 2);
    EXPECT_EQ(tint.find("Inner Tint: Color"), 12);
    EXPECT_EQ(tint.find("Outer Tint: Mask"), 17);
    const std::string modes = tint.parameter(tint.find("Blend Mode")).explanation;
    EXPECT_NE(modes.find("0 Normal, 0.111 Pop, "), std::string::npos) << modes;
}

TEST(Plugins, KeepValuesAndMakeThemSafe) {
    forEachPlugin([](const EffectDescription& effect, const PluginFile& file) {
        Use use(file, 4, 4);
        const std::vector<Parameter> parameters = parameterList(effect);
        for (int i = 0; i < file.info().parameterCount; ++i) {
            const Parameter& parameter = parameters[static_cast<std::size_t>(i)];
            SCOPED_TRACE(parameter.name);
            if (parameter.type == kFrei0rString) {
                EXPECT_EQ(use.text(i), "");
                use.setPreset(effect.presets.back().name);
                EXPECT_EQ(use.text(i), effect.presets.back().name);
                const char* none = nullptr;
                file.setParamValue(use.instance(), &none, i);
                EXPECT_EQ(use.text(i), "");
            } else if (parameter.type == kFrei0rColor) {
                const Frei0rColor usual = use.color(i);
                EXPECT_EQ(usual.green, parameter.defaultValue.color.green);
                use.set(parameter.name, Frei0rColor{0.25F, -3.0F, std::numeric_limits<float>::infinity()});
                EXPECT_EQ(use.color(i).red, 0.25F);
                EXPECT_EQ(use.color(i).green, 0.0F);
                EXPECT_EQ(use.color(i).blue, 1.0F);
                use.set(parameter.name, Frei0rColor{std::nanf(""), 0.5F, 0.5F});
                EXPECT_EQ(use.color(i).red, usual.red);
            } else {
                const double usual = use.number(i);
                EXPECT_EQ(usual, parameter.defaultValue.number);
                for (const auto& [given, kept] :
                     {std::pair{0.3125, 0.3125}, {2.0, 1.0}, {-HUGE_VAL, 0.0}, {kNan, usual}}) {
                    use.set(parameter.name, given);
                    EXPECT_EQ(use.number(i), kept) << given;
                }
            }
        }
    });
}

TEST(Plugins, LeaveTheColumnsThatFillRowsUp) {
    constexpr int kWidth = 61;
    constexpr int kPadded = 64;
    const Pixels source = testPicture(kPadded, 45);
    Pixels inner;
    for (std::size_t i = 0; i < source.size(); ++i) {
        if (i % kPadded < kWidth) {
            inner.push_back(source[i]);
        }
    }
    const EffectDescription& effect = reference().catalogue.effect("Viewfinder");
    const PluginFile file(pluginPath(pluginName(effect.name)));
    Use use(file, kPadded, 45);
    use.set("Padding", numberOfPadding(kPadded - kWidth));
    const Pixels rendered = use.render(source, 0.72);
    const Pixels expected = reference().render(ParameterStore(effect), inner, kWidth, at(0.72));
    for (std::size_t i = 0; i < source.size(); ++i) {
        const std::size_t x = i % kPadded;
        ASSERT_EQ(rendered[i], x < kWidth ? expected[i / kPadded * kWidth + x] : source[i]) << i;
    }
}

TEST(Choices, AreFoundByTheNumbersThatExplanationsShow) {
    for (std::size_t count = 1; count <= 12; ++count) {
        for (std::size_t item = 0; item < count; ++item) {
            const double number = numberOfItem(item, count);
            EXPECT_EQ(itemAt(number, count), item);
            EXPECT_EQ(itemAt(std::round(number * 1000.0) / 1000.0, count), item);
        }
    }
}

TEST(Plugins, RenderWhatTheModuleRenders) {
    constexpr int kWidth = 61;
    const Pixels source = testPicture(kWidth, 45);
    forEachPlugin([&](const EffectDescription& effect, const PluginFile& file) {
        Use use(file, kWidth, 45);
        EXPECT_EQ(use.render(source, 0.72), reference().render(ParameterStore(effect), source, kWidth, at(0.72)))
            << "defaults";
        for (const hostkit::PresetDescription& preset : effect.presets) {
            ParameterStore parameters(effect);
            parameters.apply(effect.preset(preset.name));
            use.setPreset(preset.name);
            EXPECT_EQ(use.render(source, 0.72), reference().render(parameters, source, kWidth, at(0.72)))
                << preset.name;
        }
    });
}

TEST(Plugins, RenderPicturesOfEverySizeAndInPlace) {
    forEachPlugin([](const EffectDescription& effect, const PluginFile& file) {
        for (int width = 1; width <= 17; ++width) {
            for (const int height : {1, 18 - width, 17}) {
                const Pixels source = testPicture(width, height);
                const Pixels expected = reference().render(ParameterStore(effect), source, width, at(0.2));
                Use use(file, width, height);
                EXPECT_EQ(use.render(source, 0.2), expected) << width << " x " << height;
                Pixels both = source;
                file.update(use.instance(), 0.2, both.data(), both.data());
                EXPECT_EQ(both, expected) << width << " x " << height << " in place";
            }
        }
    });
}

/// Renders Selective Tint, which has all types of parameters, in a plug-in and by the host kit.
class SelectiveTint : public testing::Test {
protected:
    void expectEqual(const char* what) {
        EXPECT_EQ(use.render(source, 0.0), reference().render(parameters, source, 48, context)) << what;
    }

    const EffectDescription& effect = reference().catalogue.effect("Selective Tint");
    PluginFile file{pluginPath("lumiset_selective_tint")};
    Use use{file, 48, 40};
    ParameterStore parameters{effect};
    Pixels source = testPicture(48, 40);
    hostkit::FrameContext context = at(0.0);
};

TEST_F(SelectiveTint, TakesEveryTypeOfValue) {
    use.set("Inner Tint: Color", Frei0rColor{1.0F, 0.5019608F, 0.0F});
    use.set("Inner Tint: Blend", 0.75);
    use.set("Top Left X", 0.4);
    use.set("Bottom Right Y", 0.9);
    use.set("Blend Mode", 2.0 / 9.0);
    use.set("Test Mask", 0.5);
    parameters.set("Inner Tint/Color", "#FF8000");
    parameters.set("Inner Tint/Blend", "75");
    parameters.set("Top Left", "40,20");
    parameters.set("Bottom Right", "80,90");
    parameters.set("Blend Mode", "Screen");
    parameters.set("Test Mask", "on");
    expectEqual("test mask");
    use.set("Test Mask", 0.49);
    parameters.set("Test Mask", "off");
    expectEqual("picture");
}

TEST_F(SelectiveTint, LetsSlidersWinOverThePreset) {
    use.setPreset("golden glow ");
    parameters.apply(effect.preset("Golden Glow"));
    expectEqual("preset");
    use.set("Top Left Y", 0.6);
    use.set("Outer Tint: Blend", 1.0);
    use.set("Inner Tint: Blend", 0.00004);  // no panel shows a difference to the default
    ParamValue corner = parameters.valueAt(effect.parameter("Top Left"), 0.0);
    corner.point.y = 0.6F;
    parameters.set(effect.parameter("Top Left"), corner);
    parameters.set("Outer Tint/Blend", "100");
    expectEqual("two sliders");
    use.setPreset("");
    parameters = ParameterStore(effect);
    parameters.set("Top Left", "20,60");
    parameters.set("Outer Tint/Blend", "100");
    expectEqual("without the preset");
}

TEST_F(SelectiveTint, TakesAPresetFile) {
    parameters.apply(effect.preset("Heat Lamp"));
    parameters.set("Blend Mode", "Hue");
    const std::string path = testing::TempDir() + "lumiset_frei0r_test.lumve";
    hostkit::savePresetFile(reference().module.effectLibrary(), path, parameters);
    use.setPreset(path);
    std::filesystem::remove(path);
    use.setPreset(path);
    expectEqual("the file is read when its name changes");
}

TEST_F(SelectiveTint, SaysOnceThatAPresetIsNone) {
    testing::internal::CaptureStderr();
    Use other(file, 48, 40);
    for (int i = 0; i < 3; ++i) {
        use.setPreset("Golden Glue");
        other.setPreset("Golden Glue");
        other.setPreset("");
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "lumiset: Selective Tint has no preset \"Golden Glue\". Did you mean \"Golden Glow\"? Nor is it a preset "
              "file.\n");
    expectEqual("defaults");
}

TEST(Viewfinder, KnowsPixelsAndFieldsThatHostsDoNotTell) {
    const EffectDescription& effect = reference().catalogue.effect("Viewfinder");
    const PluginFile file(pluginPath("lumiset_viewfinder"));
    const Pixels source = testPicture(180, 144);
    Use use(file, 180, 144);
    hostkit::FrameContext context = at(1.0);
    const Pixels square = use.render(source, 1.0);

    use.set("Pixel Aspect", 7.0 / 11.0);
    context.pixelAspect = 64.0 / 45.0;
    const Pixels wide = use.render(source, 1.0);
    EXPECT_EQ(wide, reference().render(ParameterStore(effect), source, 180, context));
    EXPECT_NE(wide, square);

    context.durationSeconds = 0.04;
    for (const auto& [number, order] :
         {std::pair{0.5, hostkit::FieldOrder::kTopFirst}, {1.0, hostkit::FieldOrder::kBottomFirst}}) {
        use.set("Fields", number);
        context.fields = order;
        const Pixels fields = use.render(source, 1.0);
        EXPECT_EQ(fields, reference().render(ParameterStore(effect), source, 180, context));
        EXPECT_NE(fields, wide);
    }
}

}  // namespace
}  // namespace lumiset::frei0r
