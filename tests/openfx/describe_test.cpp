#include <random>

#include "tests/openfx/use.h"

namespace lumiset::openfx::test {
namespace {

TEST(Describing, TellsEveryHostWhatItNeeds) {
    Host nothing{};
    EXPECT_EQ(bundle().setHost(TestHost().record()), kOk);
    EXPECT_EQ(bundle().setHost(&nothing), kFailed);
    const auto& effects = reference().catalogue.effects();
    ASSERT_EQ(bundle().count(), static_cast<int>(effects.size()));
    for (const hostkit::EffectDescription& effect : effects) {
        SCOPED_TRACE(effect.name);
        Plugin& plugin = pluginOf(effect.name);
        EXPECT_STREQ(plugin.api, "OfxImageEffectPluginAPI");
        EXPECT_EQ(plugin.apiVersion, 1);
        TestHost host;
        const auto described = host.describe(plugin, "OfxImageEffectContextGeneral");
        const PropertySet& props = described->props;
        EXPECT_EQ(props.get<std::string>("OfxPropLabel"), effect.name);
        EXPECT_EQ(props.count("OfxImageEffectPropSupportedContexts"), 2U);
        EXPECT_EQ(props.count("OfxImageEffectPropSupportedPixelDepths"), 4U);
        EXPECT_EQ(props.get<std::string>("OfxImageEffectPluginRenderThreadSafety"), "OfxImageEffectRenderFullySafe");
        EXPECT_EQ(props.get<int>("OfxImageEffectPropSupportsTiles"), 0);
        EXPECT_EQ(described->clips.size(), 2U);
        EXPECT_EQ(described->clips.at("Source").props.count("OfxImageEffectPropSupportedComponents"), 2U);
    }
    EXPECT_EQ(complaints().take(), "");
}

// Groups come before what is in them, a page lists everything else, and numbers have all the limits that Resolve asks
// for. Projects keep the names of parameters and the numbers of choices.
TEST(Describing, DefinesParametersThatHostsCanShow) {
    for (const hostkit::EffectDescription& effect : reference().catalogue.effects()) {
        TestHost host;
        const auto described = host.describe(pluginOf(effect.name));
        std::set<std::string> groups{""};
        std::size_t shown = 0;
        std::set<std::string> labels;
        for (const auto& param : described->params) {
            SCOPED_TRACE(effect.name + ", " + param->name);
            const PropertySet& props = param->props;
            const std::string parent = props.get<std::string>("OfxParamPropParent");
            EXPECT_TRUE(groups.contains(parent));
            EXPECT_EQ(param->name.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789_"), std::string::npos);
            EXPECT_NE(props.get<std::string>("OfxPropLabel"), "");
            EXPECT_TRUE(labels.insert(parent + "/" + props.get<std::string>("OfxPropLabel")).second);
            if (param->kind == "Group") {
                groups.insert(param->name);
                continue;
            }
            shown += param->kind == "Page" ? 0U : 1U;
            EXPECT_TRUE(param->kind == "Page" || props.has("OfxParamPropHint"));
            if (param->kind.starts_with("Double") || param->kind == "RGB") {
                const std::size_t size = props.count("OfxParamPropDefault");
                for (const char* limit :
                     {"OfxParamPropMin", "OfxParamPropMax", "OfxParamPropDisplayMin", "OfxParamPropDisplayMax"}) {
                    ASSERT_EQ(props.count(limit), size);
                }
                for (std::size_t i = 0; i < size; ++i) {
                    EXPECT_LE(props.get<double>("OfxParamPropMin", i), props.get<double>("OfxParamPropDefault", i));
                    EXPECT_GE(props.get<double>("OfxParamPropMax", i), props.get<double>("OfxParamPropDefault", i));
                }
            }
            EXPECT_TRUE(param->kind != "Choice" || props.count("OfxParamPropChoiceOption") > 1);
        }
        EXPECT_EQ(described->param("controls").props.count("OfxParamPropPageChild"), shown);
        EXPECT_EQ(described->setProps.get<std::string>("OfxPluginPropParamPageOrder"), "controls");
    }
    TestHost host;
    const auto tint = host.describe(pluginOf("Selective Tint"));
    EXPECT_EQ(tint->param("inner_tint__color").kind, "RGB");
    EXPECT_EQ(tint->param("inner_tint__color").props.get<std::string>("OfxPropLabel"), "Color");
    EXPECT_EQ(tint->param("blend_mode").props.get<std::string>("OfxParamPropChoiceOption", 9), "Hue");
    const auto oldTv = host.describe(pluginOf("Old TV"));
    const PropertySet& chroma = oldTv->param("chroma").props;
    EXPECT_EQ(chroma.get<double>("OfxParamPropMin"), -100.0);
    EXPECT_EQ(chroma.get<double>("OfxParamPropDefault"), 0.0);
    EXPECT_EQ(oldTv->param("tint_color").props.get<std::string>("OfxParamPropParent"), "group_video_quality");
    EXPECT_EQ(complaints().take(), "");
}

// The default of a position is told in shares of the project, y upwards; two plain numbers are shares from the top left
// corner. Where the coordinates of a default cannot be told it must not be a position.
TEST(Describing, MakesPointsWhatTheHostCanTake) {
    const auto cornerIn = [](const Profile& profile) {
        TestHost host(profile);
        const auto described = host.describe(pluginOf("Selective Focus"));
        const PropertySet& props = described->param("bottom_left").props;
        return std::tuple{props.get<std::string>("OfxParamPropDoubleType"), props.get<double>("OfxParamPropDefault", 0),
                          props.get<double>("OfxParamPropDefault", 1)};
    };
    const std::tuple<std::string, double, double> plain{"OfxParamDoubleTypePlain", 0.25, 0.75};
    const std::tuple<std::string, double, double> position{"OfxParamDoubleTypeXYAbsolute", 0.25, 0.25};
    EXPECT_EQ(cornerIn({.name = "MLT"}), plain);
    EXPECT_EQ(cornerIn({.name = "DaVinciResolve"}), plain);
    EXPECT_EQ(cornerIn({.name = "fr.inria.Natron"}), position);
    EXPECT_EQ(cornerIn({.name = "uk.co.thefoundry.nuke"}), position);
    EXPECT_EQ(cornerIn({.name = "fr.inria.Natron", .refused = {"OfxParamPropDefaultCoordinateSystem"}}), plain);
    EXPECT_EQ(complaints().take(), "");
}

TEST(Describing, MakesDoWithOldHosts) {
    // Whatever is refused or missing of these, the effect still renders.
    Profile old{.depths = {"OfxBitDepthByte"}, .tellsRates = false};
    old.missingSuites = {"OfxMessageSuite 1", "OfxMessageSuite 2", "OfxMultiThreadSuite 1", "OfxInteractSuite 1",
                         "OfxDrawSuite 1"};
    old.refused = {
        "OfxPropVersionLabel",        "OfxPropPluginDescription",        "OfxParamPropDefaultCoordinateSystem",
        "OfxParamPropDimensionLabel", "OfxImageClipPropFieldExtraction", "OfxParamPropEvaluateOnChange",
        "OfxParamPropCanUndo"};
    for (const char* effect : {"Selective Focus", "Old TV"}) {
        Use use(effect, old);
        EXPECT_EQ(use.descriptor->props.count("OfxImageEffectPropSupportedPixelDepths"), 1U);
        EXPECT_FALSE(use.descriptor->props.has("OfxImageEffectPluginPropOverlayInteractV2"));
        use.setLayouts({}, {});
        ASSERT_EQ(use.render(), kOk);
        EXPECT_EQ(difference(use.output->memory, use.expected()), "");
    }
    // What no effect can do without is told, and the plug-in not loaded.
    Plugin& plugin = pluginOf("Outline");
    for (const char* suite : {"OfxPropertySuite 1", "OfxImageEffectSuite 1", "OfxParameterSuite 1"}) {
        TestHost without({.missingSuites = {suite}});
        plugin.setHost(without.record());
        testing::internal::CaptureStderr();
        EXPECT_EQ(without.call(plugin, "OfxActionLoad", nullptr), kErrMissingHostFeature);
        EXPECT_NE(testing::internal::GetCapturedStderr().find(std::string(suite).substr(0, 12)), std::string::npos);
    }
    TestHost host;
    plugin.setHost(host.record());
    EXPECT_EQ(host.call(plugin, "OfxActionLoad", nullptr), kOk) << "a host that has everything comes after it";
    EXPECT_EQ(host.call(plugin, "OfxActionOfTheFuture", nullptr), kReplyDefault);
}

TEST(Loading, CanBeRepeatedAHundredTimes) {
    TestHost host;
    for (int i = 0; i < 100; ++i) {
        const Bundle again(LUMISET_BUNDLE_FILE);
        ASSERT_EQ(again.count(), bundle().count());
        Plugin& plugin = again.plugin(i % again.count());
        const auto described = host.describe(plugin);
        host.destroy(plugin, host.create(plugin, *described));
        ASSERT_EQ(host.call(plugin, "OfxActionUnload", nullptr), kOk);
    }
    EXPECT_EQ(complaints().take(), "");
}

TEST(Clips, HavePreferencesAndRegions) {
    for (const char* effect : {"Old TV", "Outline"}) {
        Use use(effect);
        PropertySet& source = use.instance->clips["Source"].props;
        for (const auto& [components, alpha, told] :
             {std::tuple{"OfxImageComponentRGBA", "OfxImageOpaque", "OfxImageAlphaUnPremultiplied"},
              {"OfxImageComponentRGBA", "OfxImageAlphaPremultiplied", "OfxImageAlphaPremultiplied"},
              {"OfxImageComponentRGB", "OfxImageOpaque", ""}}) {
            source.put("OfxImageEffectPropComponents", {std::string(components)});
            source.put("OfxImageEffectPropPreMultiplication", {std::string(alpha)});
            Arguments arguments;
            EXPECT_EQ(
                use.host.call(use.plugin, "OfxImageEffectActionGetClipPreferences", use.instance.get(), &arguments),
                kOk);
            EXPECT_EQ(arguments.out.get<std::string>("OfxImageEffectPropPreMultiplication"), told);
            EXPECT_EQ(arguments.out.get<int>("OfxImageEffectFrameVarying"), effect == std::string("Old TV") ? 1 : 0);
        }
        use.instance->clips["Source"].region = {-8, 3, 100, 50};
        for (const auto& [action, property] :
             {std::pair{"OfxImageEffectActionGetRegionOfDefinition", "OfxImageEffectPropRegionOfDefinition"},
              {"OfxImageEffectActionGetRegionsOfInterest", "OfxImageClipPropRoI_Source"}}) {
            Arguments arguments;
            arguments.in.put("OfxPropTime", {0.0});
            EXPECT_EQ(use.host.call(use.plugin, action, use.instance.get(), &arguments), kOk);
            EXPECT_EQ(arguments.out.get<double>(property, 0), -8.0);
            EXPECT_EQ(arguments.out.get<double>(property, 3), 50.0);
        }
        use.instance->clips["Source"].region = {};
        Arguments arguments;
        arguments.in.put("OfxPropTime", {0.0});
        EXPECT_EQ(
            use.host.call(use.plugin, "OfxImageEffectActionGetRegionOfDefinition", use.instance.get(), &arguments),
            kReplyDefault);
    }
}

}  // namespace
}  // namespace lumiset::openfx::test
