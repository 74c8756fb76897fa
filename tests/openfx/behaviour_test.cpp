#include <cmath>
#include <filesystem>
#include <fstream>
#include <random>

#include "hostkit/gl/gl_api.h"
#include "hostkit/preset_file.h"
#include "tests/openfx/use.h"

namespace lumiset::openfx::test {
namespace {

/// What a person sets so that an effect changes nothing; everything else may be anything.
struct Neutral {
    const char* effect;
    std::vector<std::pair<const char*, double>> settings;
};

Status askIdentity(Use& use, double time, Arguments& arguments) {
    arguments.in.put("OfxPropTime", {time});
    return use.host.call(use.plugin, "OfxImageEffectActionIsIdentity", use.instance.get(), &arguments);
}

TEST(Identity, IsToldWhereEveryPixelComesBackAsItWas) {
    Layout floats;
    floats.depth = "OfxBitDepthFloat";
    std::mt19937 random(5);
    for (const Neutral& neutral : {
             Neutral{"Selective Focus", {{"blur", 0}, {"test_mask", 0}}},
             Neutral{"Selective Tint", {{"inner_tint__blend", 0}, {"outer_tint__blend", 0}, {"test_mask", 0}}},
             Neutral{"Selective Color", {{"strength", 0}, {"show_masks", 0}}},
             Neutral{"Alpha Processor",
                     {{"grow", 0}, {"blur", 0}, {"invert", 0}, {"premultiply", 0}, {"test_mask", 0}}},
         }) {
        Use use(neutral.effect);
        for (int round = 0; round < 4; ++round) {
            for (const auto& param : use.instance->params) {
                const PropertySet& props = param->props;
                const bool isNumber = param->kind.starts_with("Double") || param->kind == "RGB";
                for (std::size_t i = 0; i < param->numbers.size() && isNumber; ++i) {
                    const double low = props.get<double>("OfxParamPropMin", i);
                    const double high = props.get<double>("OfxParamPropMax", i);
                    param->numbers[i] = low + (high - low) * static_cast<double>(random() % 101) / 100.0;
                }
            }
            for (const auto& [name, value] : neutral.settings) {
                use.instance->param(name).numbers[0] = value;
            }
            Arguments arguments;
            ASSERT_EQ(askIdentity(use, 6.5, arguments), kOk) << neutral.effect;
            EXPECT_EQ(arguments.out.get<std::string>("OfxPropName"), "Source");
            EXPECT_EQ(arguments.out.get<double>("OfxPropTime"), 6.5);
            for (const Layout& layout : {Layout(), floats}) {
                use.setLayouts(layout, layout);
                ASSERT_EQ(use.render(), kOk);
                EXPECT_EQ(difference(use.output->memory, use.source->memory), "")
                    << neutral.effect << ", " << layout.depth;
            }
        }
        // Each of the settings matters.
        for (const auto& [name, value] : neutral.settings) {
            use.instance->param(name).numbers[0] = 1.0;
            Arguments arguments;
            EXPECT_EQ(askIdentity(use, 0.0, arguments), kReplyDefault) << neutral.effect << ", " << name;
            use.instance->param(name).numbers[0] = value;
        }
    }
    Use oldTv("Old TV");
    Arguments arguments;
    EXPECT_EQ(askIdentity(oldTv, 0.0, arguments), kReplyDefault);
}

TEST(Presets, AreAppliedWhenAPersonChoosesOneAndThenOnly) {
    Use use("Old TV");
    Param& noise = use.instance->param("noise");
    noise.keys = 2;
    noise.moving = [](double time) { return time; };
    use.choosePreset("Snow");
    EXPECT_EQ(use.instance->undoSteps, std::vector<std::string>{"Preset Snow"});
    EXPECT_EQ(noise.keys, 0U);
    const double snow = noise.numbers[0];
    noise.numbers[0] = 3.0;
    // What the host says by itself or of other parameters changes nothing.
    use.instance->param("preset").numbers[0] = 1.0;
    for (const char* reason : {"OfxChangePluginEdited", "OfxChangeTime"}) {
        EXPECT_EQ(use.host.changed(*use.instance, "preset", reason), kReplyDefault);
    }
    EXPECT_EQ(use.host.changed(*use.instance, "noise"), kReplyDefault);
    EXPECT_EQ(use.host.changed(*use.instance, "of another plug-in"), kReplyDefault);
    EXPECT_EQ(noise.numbers[0], 3.0);
    EXPECT_NE(snow, 3.0);
}

TEST(Presets, LieUnderWhatWasChangedInAHostThatTellsNothing) {
    Profile mlt{.name = "MLT"};
    mlt.tellsChanges = false;
    Use use("Selective Tint", mlt);
    use.setLayouts({}, {});
    use.choosePreset("Golden Glow");
    use.instance->param("outer_tint__blend").numbers[0] = 100.0;
    use.values.set("Outer Tint/Blend", "100");
    ASSERT_EQ(use.render(), kOk);
    EXPECT_EQ(difference(use.output->memory, use.expected()), "");

    const std::string file = testing::TempDir() + "lumiset_openfx_under.lumve";
    hostkit::savePresetFile(reference().module.effectLibrary(), file, use.values);
    use.instance->param("preset").numbers[0] = 0.0;
    use.instance->param("outer_tint__blend").numbers[0] = 0.0;
    use.instance->param("preset_file").text = file;
    ASSERT_EQ(use.render(), kOk);
    EXPECT_EQ(difference(use.output->memory, use.expected()), "");
    std::filesystem::remove(file);
}

TEST(PresetFiles, AreSavedAndLoaded) {
    namespace fs = std::filesystem;
    const fs::path folder = fs::path(testing::TempDir()) / "lumiset openfx";
    fs::create_directories(folder);
    Use use("Outline");
    Param& file = use.instance->param("preset_file");
    EXPECT_EQ(use.host.changed(*use.instance, "load_preset_file"), kFailed) << "no file is chosen";
    file.text = (folder / "glow").string();
    use.instance->param("color").numbers = {1.0, 0.2, 0.6};
    use.instance->param("width").numbers = {12.5};
    EXPECT_EQ(use.host.changed(*use.instance, "save_preset_file"), kOk);
    EXPECT_TRUE(fs::exists(folder / "glow.lumvc"));
    hostkit::ParameterStore saved(use.description);
    hostkit::loadPresetFile(reference().module.effectLibrary(), (folder / "glow.lumvc").string(), saved);
    EXPECT_EQ(saved.valueAt(use.description.parameter("Color"), 0.0).color, 0x9933FFU);

    // What is there is replaced when the person says so.
    use.instance->param("width").numbers = {99.0};
    use.instance->reply = kReplyNo;
    EXPECT_EQ(use.host.changed(*use.instance, "save_preset_file"), kOk);
    EXPECT_NE(use.instance->messages.back().find("glow.lumvc"), std::string::npos);
    file.text += ".lumvc";
    EXPECT_EQ(use.host.changed(*use.instance, "load_preset_file"), kOk);
    EXPECT_EQ(use.instance->param("width").numbers[0], 12.5);
    EXPECT_EQ(use.instance->undoSteps, std::vector<std::string>{"Preset glow"});
    use.instance->param("width").numbers = {99.0};
    use.instance->reply = kReplyYes;
    EXPECT_EQ(use.host.changed(*use.instance, "save_preset_file"), kOk);
    EXPECT_EQ(use.host.changed(*use.instance, "load_preset_file"), kOk);
    EXPECT_NEAR(use.instance->param("width").numbers[0], 99.0, 1e-4);

    std::ofstream(folder / "glow.lumvc") << "no preset";
    EXPECT_EQ(use.host.changed(*use.instance, "load_preset_file"), kFailed);
    EXPECT_NE(use.instance->messages.back().find("not a preset"), std::string::npos);
    EXPECT_NEAR(use.instance->param("width").numbers[0], 99.0, 1e-4);
    fs::remove_all(folder);
}

/// The overlay of an effect in use.
class Overlay {
public:
    explicit Overlay(Profile profile) : use("Selective Tint", std::move(profile)) {
        auto* entry = use.descriptor->props.get<void*>(use.host.profile.missingSuites.empty()
                                                           ? "OfxImageEffectPluginPropOverlayInteractV2"
                                                           : "OfxImageEffectPluginPropOverlayInteractV1");
        main = reinterpret_cast<MainEntry*>(entry);
        interact.put("OfxPropEffectInstance", {static_cast<void*>(use.instance.get())});
        EXPECT_EQ(act("OfxActionDescribe"), kOk);
        EXPECT_EQ(act("OfxActionCreateInstance"), kOk);
        use.instance->clips["Source"].region = {10, 20, 210, 120};
    }
    ~Overlay() { EXPECT_EQ(act("OfxActionDestroyInstance"), kOk); }
    Overlay(const Overlay&) = delete;
    Overlay& operator=(const Overlay&) = delete;

    Status act(const char* action, PointD pen = {}, int key = 0) {
        Arguments arguments;
        arguments.in.put("OfxPropTime", {0.0});
        arguments.in.put("OfxInteractPropPixelScale", {2.0, 2.0});
        arguments.in.put("OfxInteractPropPenPosition", {pen.x, pen.y});
        arguments.in.put("OfxInteractPropDrawContext", {static_cast<void*>(&arguments)});
        arguments.in.put("kOfxPropKeySym", {key});
        Plugin entry{};
        entry.mainEntry = main;
        return use.host.call(entry, action, reinterpret_cast<EffectObject*>(&interact), &arguments);
    }

    Use use;
    PropertySet interact{"interact"};
    MainEntry* main = nullptr;
};

class Overlays : public testing::TestWithParam<const char*>, protected Overlay {
protected:
    Overlays() : Overlay(Profile{.name = GetParam()}) {}
    /// The corner at the lower right, as a person sees it, in canonical coordinates.
    [[nodiscard]] PointD corner() {
        const std::vector<double>& numbers = use.instance->param("bottom_right").numbers;
        return GetParam() == std::string("fr.inria.Natron")
                   ? PointD{numbers[0], numbers[1]}
                   : PointD{10.0 + 200.0 * numbers[0], 120.0 - 100.0 * numbers[1]};
    }
};

TEST_P(Overlays, ShowAndMoveTheCorners) {
    use.instance->param("bottom_right").numbers =
        GetParam() == std::string("fr.inria.Natron") ? std::vector{170.0, 40.0} : std::vector{0.8, 0.8};
    EXPECT_EQ(interact.count("OfxInteractPropSlaveToParam"), 4U);
    drawings().clear();
    EXPECT_EQ(act("OfxInteractActionDraw"), kOk);
    ASSERT_EQ(drawings().size(), 10U) << "the area and its corners, each with a rim";
    EXPECT_EQ(drawings().back().substr(0, 6), "2 of 4");

    EXPECT_EQ(act("OfxInteractActionPenDown", {120, 70}), kReplyDefault) << "not near a corner";
    EXPECT_EQ(act("OfxInteractActionPenMotion", {130, 70}), kReplyDefault);
    EXPECT_EQ(act("OfxInteractActionPenDown", {180, 50}), kOk);
    EXPECT_EQ(act("OfxInteractActionPenMotion", {150, 60}), kOk);
    EXPECT_NEAR(corner().x, 150.0, 1e-4);
    EXPECT_NEAR(corner().y, 60.0, 1e-4);
    EXPECT_EQ(act("OfxInteractActionPenUp", {150, 60}), kOk);
    EXPECT_EQ(use.instance->undoSteps, std::vector<std::string>{"Move Bottom Right"});
    EXPECT_EQ(use.instance->openEdits, 0);

    EXPECT_EQ(act("OfxInteractActionKeyDown", {}, 0xFF52), kOk);  // up
    EXPECT_NEAR(corner().y, 62.0, 1e-4) << "a pixel of the screen";
    EXPECT_EQ(act("OfxInteractActionKeyDown", {}, 'a'), kReplyDefault);
    // Beyond the picture there is nothing to hold on to.
    EXPECT_EQ(act("OfxInteractActionPenDown", {150, 62}), kOk);
    EXPECT_EQ(act("OfxInteractActionPenMotion", {999, -999}), kOk);
    EXPECT_EQ(act("OfxInteractActionPenUp"), kOk);
    EXPECT_NEAR(corner().x, 210.0, 1e-4);
    EXPECT_NEAR(corner().y, 20.0, 1e-4);
}

TEST(OverlayInOpenGL, IsDrawnWhereTheHostHasNoSuiteForIt) {
    constexpr int kWidth = 220;
    constexpr int kHeight = 140;
    std::unique_ptr<hostkit::GLContext> context;
    try {
        context = hostkit::createGLContext();
    } catch (const hostkit::GLError& error) {
        GTEST_SKIP() << "No OpenGL here, nothing is tested: " << error.what();
    }
    context->makeCurrent();
    const hostkit::GLApi gl(*context);
    GLuint texture = 0;
    GLuint buffer = 0;
    gl.GenTextures(1, &texture);
    gl.BindTexture(GL_TEXTURE_2D, texture);
    gl.TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, kWidth, kHeight, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
    gl.GenFramebuffers(1, &buffer);
    gl.BindFramebuffer(GL_FRAMEBUFFER, buffer);
    gl.FramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture, 0);
    gl.Viewport(0, 0, kWidth, kHeight);
    // What a host may have left: grey, textured, lit.
    gl.Enable(GL_TEXTURE_2D);
    gl.Enable(GL_LIGHTING);
    const auto call = [&]<class... Args>(const char* name, Args... args) {
        reinterpret_cast<void (*)(Args...)>(context->procAddress(name))(args...);
    };
    call("glClearColor", 0.5F, 0.5F, 0.5F, 1.0F);
    call("glClear", GLbitfield{GL_COLOR_BUFFER_BIT});
    call("glOrtho", 0.0, double{kWidth}, 0.0, double{kHeight}, -1.0, 1.0);

    Overlay overlay({.missingSuites = {"OfxDrawSuite 1"}});
    overlay.use.instance->param("top_left").numbers = {0.1, 0.1};
    overlay.use.instance->param("top_right").numbers = {0.9, 0.1};
    overlay.use.instance->param("bottom_left").numbers = {0.1, 0.7};
    overlay.use.instance->param("bottom_right").numbers = {0.9, 0.7};
    EXPECT_EQ(overlay.act("OfxInteractActionDraw"), kOk);
    EXPECT_EQ(gl.GetError(), GLenum{GL_NO_ERROR});
    float lit = 0;
    gl.GetFloatv(GL_LIGHTING, &lit);
    EXPECT_EQ(lit, 1.0F) << "the host's state is as it was";

    std::vector<std::uint8_t> pixels(std::size_t{4} * kWidth * kHeight);
    gl.ReadPixels(0, 0, kWidth, kHeight, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    const auto lightest = [&](int x, int y) {  // of the pixels around a place
        int most = 0;
        for (int i = 0; i < 9; ++i) {
            most =
                std::max<int>(most, pixels[static_cast<std::size_t>(4 * ((y + i / 3 - 1) * kWidth + x + i % 3 - 1))]);
        }
        return most;
    };
    EXPECT_EQ(lightest(110, 110), 255) << "the upper edge";
    EXPECT_EQ(lightest(110, 50), 255) << "the lower";
    EXPECT_EQ(lightest(30, 80), 255) << "the left";
    EXPECT_EQ(lightest(190, 80), 255) << "the right";
    EXPECT_EQ(lightest(110, 80), 128) << "within";
    EXPECT_EQ(lightest(110, 30), 128) << "outside";
    context->release();
}

INSTANTIATE_TEST_SUITE_P(Hosts, Overlays, testing::Values("fr.inria.Natron", "org.example.host"));

}  // namespace
}  // namespace lumiset::openfx::test
