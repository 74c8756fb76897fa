#include <thread>

#include "tests/openfx/use.h"
#include "tests/support/system.h"

namespace lumiset::openfx::test {
namespace {

using lumiset::test::heapInUse;

Layout floats() {
    Layout layout;
    layout.depth = "OfxBitDepthFloat";
    return layout;
}

// A preset is chosen as a person does it, in a host that tells of it; MLT tells of nothing, and the preset takes effect
// within the render; Natron has positions in place of shares of the picture.
TEST(Rendering, GivesTheKitsPictureForEveryPresetInEveryKindOfHost) {
    Profile mlt{.name = "MLT"};
    mlt.tellsChanges = false;
    for (const Profile& profile : {Profile{}, mlt, Profile{.name = "fr.inria.Natron"}}) {
        for (const hostkit::EffectDescription& effect : reference().catalogue.effects()) {
            Use use(effect.name, profile);
            for (const Layout& layout : {Layout(), floats()}) {
                use.setLayouts(layout, layout);
                for (const hostkit::PresetDescription& preset : effect.presets) {
                    use.choosePreset(preset.uniqueName);
                    ASSERT_EQ(use.render(), kOk);
                    EXPECT_EQ(difference(use.output->memory, use.expected()), "")
                        << profile.name << ": " << effect.name << ", " << preset.uniqueName << ", " << layout.depth;
                }
            }
            EXPECT_EQ(use.instance->undoSteps.size(), profile.tellsChanges ? 2 * effect.presets.size() : 0);
            EXPECT_EQ(use.instance->openEdits, 0);
            EXPECT_EQ(use.instance->param("preset").numbers[0] == 0.0, profile.tellsChanges);
        }
    }
}

TEST(Rendering, TakesEveryLayoutOfPixels) {
    constexpr const char* kStraight = "OfxImageAlphaUnPremultiplied";
    constexpr const char* kPremultiplied = "OfxImageAlphaPremultiplied";
    constexpr const char* kOpaque = "OfxImageOpaque";
    for (const char* depth : {"OfxBitDepthByte", "OfxBitDepthShort", "OfxBitDepthHalf", "OfxBitDepthFloat"}) {
        for (const Layout& layout : {
                 Layout{depth, 4, kStraight, {0, 0, 64, 48}, 0, true},
                 Layout{depth, 4, kStraight, {-13, 7, 24, 38}, 12, false},
                 Layout{depth, 4, kPremultiplied, {5, -40, 68, -7}, 4, true},
                 Layout{depth, 4, kOpaque, {0, 0, 33, 21}},
                 Layout{depth, 3, kOpaque, {100, 100, 139, 131}, 20, true},
                 Layout{depth, 4, kStraight, {0, 0, 40, 30}, 0, false, true},
             }) {
            for (const char* effect : {"Old TV", "Outline"}) {
                Use use(effect);
                use.setLayouts(layout, layout);
                ASSERT_EQ(use.render(), kOk);
                EXPECT_EQ(difference(use.output->memory, use.expected()), "")
                    << effect << ' ' << depth << ' ' << layout.alpha << ' ' << layout.channels << " at "
                    << layout.bounds.x1;
            }
        }
    }
}

TEST(Rendering, LosesNothingOnTheWayToStraightAlphaAndBack) {
    Use use("Selective Color");
    use.instance->param("strength").numbers[0] = 0.0;
    Layout layout;
    layout.alpha = "OfxImageAlphaPremultiplied";
    use.setLayouts(layout, layout);
    ASSERT_EQ(use.render(), kOk);
    EXPECT_EQ(difference(use.output->memory, use.source->memory), "");
}

TEST(Rendering, WritesTheWindowAloneAndNothingBesideTheSource) {
    Use use("Old TV");
    use.setLayouts({}, {});
    use.window = {10, 5, 41, 30};
    ASSERT_EQ(use.render(), kOk);
    EXPECT_EQ(difference(use.output->memory,
                         use.expected([](int x, int y) { return x >= 10 && x < 41 && 47 - y >= 5 && 47 - y < 30; })),
              "");

    // An output that reaches beyond the source, whose rows count from another bottom.
    Layout big;
    big.bounds = {-4, -6, 70, 50};
    use.setLayouts({}, big);
    ASSERT_EQ(use.render(), kOk);
    const hostkit::FrameBuffer inner =
        reference().render(use.values, frameOf({}, *use.source, true).desc(), use.context);
    std::vector<std::uint8_t> expected(use.output->memory.size(), 0xA7);
    for (int y = 0; y < big.height(); ++y) {
        for (int x = 0; x < big.width(); ++x) {
            const int fromLeft = x - 4;
            const int fromTop = y - 2;
            const bool inside = fromLeft >= 0 && fromLeft < 64 && fromTop >= 0 && fromTop < 48;
            for (int channel = 0; channel < 4; ++channel) {
                expected[big.place(x, y, channel)] =
                    inside ? inner.row(fromTop)[4 * fromLeft + (channel == 3 ? 3 : 2 - channel)] : 0;
            }
        }
    }
    EXPECT_EQ(difference(use.output->memory, expected), "");

    // At half size some hosts tell a region that the picture does not have.
    use.setLayouts({}, {});
    use.source->props.put("OfxImagePropRegionOfDefinition", {0, 0, 70, 48});
    ASSERT_EQ(use.render(), kOk);
    EXPECT_EQ(difference(use.output->memory, use.expected()), "");
}

struct FieldCase {
    const char* asked;
    const char* stored;
    const char* order;
    int setting;
    int height;
    hostkit::FieldOrder expected;
    int rowsFromBottom;  ///< that are written: 0 even, 1 odd, 2 all
    bool oneOfTwo;
};

TEST(Rendering, PartsFieldsAsTheHostOrThePersonSays) {
    using hostkit::FieldOrder;
    constexpr const char* kNone = "OfxFieldNone";
    constexpr const char* kBoth = "OfxFieldBoth";
    constexpr const char* kLower = "OfxFieldLower";
    constexpr const char* kUpper = "OfxFieldUpper";
    for (const FieldCase& each : {
             FieldCase{kNone, kNone, kNone, 0, 48, FieldOrder::kProgressive, 2, false},
             FieldCase{kBoth, kBoth, kUpper, 0, 48, FieldOrder::kTopFirst, 2, false},
             FieldCase{kBoth, kBoth, kLower, 0, 48, FieldOrder::kBottomFirst, 2, false},
             // Rows count from the bottom: of an odd number the top row is a lower one.
             FieldCase{kBoth, kBoth, kUpper, 0, 47, FieldOrder::kBottomFirst, 2, false},
             FieldCase{kBoth, kBoth, kNone, 0, 48, FieldOrder::kProgressive, 2, false},
             FieldCase{kBoth, kNone, kUpper, 0, 48, FieldOrder::kProgressive, 2, false},
             FieldCase{kBoth, kBoth, kUpper, 1, 48, FieldOrder::kProgressive, 2, false},
             FieldCase{kNone, kNone, kNone, 2, 48, FieldOrder::kTopFirst, 2, false},
             FieldCase{kNone, kNone, kUpper, 3, 48, FieldOrder::kBottomFirst, 2, false},
             FieldCase{kLower, kBoth, kUpper, 0, 48, FieldOrder::kBottomFieldAlone, 0, true},
             FieldCase{kUpper, kBoth, kUpper, 0, 48, FieldOrder::kTopFieldAlone, 1, true},
             FieldCase{kUpper, kBoth, kUpper, 0, 47, FieldOrder::kBottomFieldAlone, 1, true},
             FieldCase{kUpper, kBoth, kUpper, 1, 48, FieldOrder::kProgressive, 1, false},
             FieldCase{kUpper, kUpper, kUpper, 0, 24, FieldOrder::kTopFieldAlone, 2, false},
         }) {
        Use use("Old TV");  // whose fields differ at any two times
        Layout layout;
        layout.bounds = {0, 3, 64, 3 + each.height};
        use.setLayouts(layout, layout);
        use.source->props.put("OfxImagePropField", {std::string(each.stored)});
        use.output->props.put("OfxImagePropField", {std::string(each.stored)});
        use.instance->clips["Source"].props.put("OfxImageClipPropFieldOrder", {std::string(each.order)});
        use.instance->param("fields").numbers[0] = each.setting;
        use.fieldToRender = each.asked;
        ASSERT_EQ(use.render(), kOk);

        const hostkit::FrameBuffer source = frameOf(layout, *use.source, true);
        hostkit::FrameBuffer result(64, each.height, kFormatBgra8);
        use.context.fields = each.expected;
        if (each.oneOfTwo) {
            const bool bottom = each.expected == FieldOrder::kBottomFieldAlone;
            const hostkit::FrameBuffer field =
                reference().render(use.values, hostkit::fieldOf(source.desc(), bottom), use.context);
            hostkit::convertFrame(field.desc(), hostkit::fieldOf(result.desc(), bottom));
        } else {
            hostkit::convertFrame(reference().render(use.values, source.desc(), use.context).desc(), result.desc());
        }
        std::vector<std::uint8_t> expected(use.output->memory.size(), 0xA7);
        storeFrame(result, layout, expected, [&](int, int y) {
            return each.rowsFromBottom == 2 || (each.height - 1 - y) % 2 == each.rowsFromBottom;
        });
        EXPECT_EQ(difference(use.output->memory, expected), "")
            << each.asked << ' ' << each.stored << ' ' << each.order << ' ' << each.setting << ' ' << each.height;
    }
}

TEST(Rendering, KnowsTimeAndTheShapeOfPixels) {
    Use use("Viewfinder", Profile{.tellsRates = false});
    use.setLayouts({}, {});
    use.source->props.put("OfxImagePropPixelAspectRatio", {16.0 / 15.0});
    use.source->props.put("OfxImageEffectPropRenderScale", {0.25, 0.5});
    use.context.pixelAspect = 16.0 / 15.0 * 2.0;
    const auto expectAt = [&](double rate, const char* what) {
        use.context.timeSeconds = 18.0 / rate;
        ASSERT_EQ(use.render(), kOk);
        EXPECT_EQ(difference(use.output->memory, use.expected()), "") << what;
    };
    expectAt(25.0, "nothing tells");
    use.instance->props.put("OfxImageEffectPropFrameRate", {10.0});
    expectAt(10.0, "the project tells");
    use.instance->clips["Source"].props.put("OfxImageEffectPropFrameRate", {50.0});
    expectAt(50.0, "the source tells");
    use.instance->clips["Output"].props.put("OfxImageEffectPropFrameRate", {0.0});
    expectAt(50.0, "the output tells nonsense");
    use.instance->clips["Output"].props.put("OfxImageEffectPropFrameRate", {5.0});
    expectAt(5.0, "the output tells");
}

TEST(Rendering, ReadsValuesAtTheFramesTimeAndMakesThemSafe) {
    Use use("Selective Tint");
    use.setLayouts({}, {});
    use.instance->param("inner_tint__blend").moving = [](double time) { return 4.0 * time; };
    use.instance->param("outer_tint__blend").numbers[0] = 1e9;
    use.instance->param("blend_mode").numbers[0] = 77;
    use.instance->param("top_left").numbers = {-3.0, std::nan("")};
    use.instance->param("inner_tint__color").numbers = {1.0, 128.4 / 255.0, -0.5};
    use.values.set("Inner Tint/Blend", "72");
    use.values.set("Outer Tint/Blend", "100");
    use.values.set("Blend Mode", "Hue");
    use.values.set("Top Left", "0,20");
    use.values.set("Inner Tint/Color", "#FF8000");
    ASSERT_EQ(use.render(), kOk);
    EXPECT_EQ(difference(use.output->memory, use.expected()), "");
}

TEST(Rendering, SaysWhyItCannot) {
    Use use("Outline");
    use.setLayouts({}, {});
    const std::vector<std::uint8_t> untouched = use.output->memory;
    const auto refuses = [&](Status status, const char* property, Value value) {
        use.setLayouts({}, {});
        use.source->props.put(property, {std::move(value)});
        EXPECT_EQ(use.render(), status) << property;
        EXPECT_EQ(difference(use.output->memory, untouched), "");
        EXPECT_NE(use.instance->persistentMessage, "");
    };
    refuses(kErrImageFormat, "OfxImageEffectPropPixelDepth", std::string("OfxBitDepthNone"));
    refuses(kErrImageFormat, "OfxImageEffectPropComponents", std::string("OfxImageComponentAlpha"));
    refuses(kErrImageFormat, "OfxImagePropData", static_cast<void*>(nullptr));
    refuses(kErrImageFormat, "OfxImagePropRowBytes", 63 * 4);
    use.setLayouts({}, {});
    EXPECT_EQ(use.render(), kOk);
    EXPECT_EQ(use.instance->persistentMessage, "") << "what was wrong is no more";

    for (int questions = 0; questions < 4; ++questions) {
        use.setLayouts({}, {});
        use.instance->abortAfter = questions;
        EXPECT_EQ(use.render(), kOk);
        EXPECT_EQ(difference(use.output->memory, questions < 3 ? untouched : use.expected()), "") << questions;
        use.instance->abortAfter = -1;
    }

    use.setLayouts({}, {});
    use.instance->clips["Source"].picture = nullptr;
    EXPECT_EQ(use.render(), kOk);
    EXPECT_EQ(use.output->memory[Layout().place(63, 0, 3)], 0) << "without a source it is transparent";
    use.instance->clips["Output"].picture = nullptr;
    EXPECT_EQ(use.render(), kErrMissingHostFeature);
}

TEST(Rendering, DividesLargeFramesAmongTheHostsThreadsOrItsOwn) {
    const Layout layout{.bounds = {0, 0, 640, 360}};
    Profile without;
    without.missingSuites = {"OfxMultiThreadSuite 1"};
    const struct {
        Profile profile;
        bool refuses;
        bool asks;
    } rows[] = {{{}, false, true}, {{}, true, true}, {without, false, false}};
    for (const auto& row : rows) {
        SCOPED_TRACE(&row - rows);
        Use use("Alpha Processor", row.profile);
        use.setLayouts(layout, layout);
        threading().calls = 0;
        threading().refuses = row.refuses;
        EXPECT_EQ(use.render(), kOk);
        threading().refuses = false;
        EXPECT_EQ(threading().calls > 0, row.asks);
        EXPECT_EQ(difference(use.output->memory, use.expected()), "");
    }
}

TEST(Rendering, LeavesItsMemoryToLaterFramesWhileThereIsAnInstance) {
    if (heapInUse() == 0) {
        GTEST_SKIP() << "The heap does not tell what is in use.";
    }
    constexpr std::size_t kScratch = 500'000;
    const Layout layout{.bounds = {0, 0, 640, 360}};
    for (const bool isMlt : {false, true}) {
        SCOPED_TRACE(isMlt);
        Profile profile{.name = isMlt ? "MLT" : "org.example.host"};
        profile.tellsChanges = !isMlt;
        const auto purge = [&] {
            Use use("Outline", profile);
            EXPECT_EQ(use.host.call(use.plugin, "OfxActionPurgeCaches", use.instance.get()), kOk);
        };
        purge();
        const std::size_t before = heapInUse();
        {
            const Use staying("Outline", profile);
            {
                Use ending("Outline", profile);
                ending.setLayouts(layout, layout);
                EXPECT_EQ(ending.render(), kOk);
            }
            EXPECT_GT(heapInUse(), before + kScratch);
        }
        EXPECT_EQ(heapInUse() > before + kScratch, isMlt) << "MLT has an instance for each frame";
        purge();
        EXPECT_LT(heapInUse(), before + kScratch);
    }
}

// One effect in several hosts' threads, instances of their own and one shared, and MLT's way: everything for a frame.
TEST(Rendering, WorksInSeveralThreadsAtOnce) {
    Use shared("Old TV");
    shared.setLayouts({}, {});
    ASSERT_EQ(shared.render(), kOk);
    const std::vector<std::uint8_t> expected = shared.expected();
    std::vector<std::thread> threads;
    std::atomic<int> wrong{0};
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int frame = 0; frame < 8; ++frame) {
                TestHost& host = shared.host;
                const auto descriptor = host.describe(shared.plugin);
                auto instance = host.create(shared.plugin, *descriptor);
                const auto source = makePicture({}, 7);
                const auto output = makePicture({}, 0);
                instance->clips["Source"].picture = source.get();
                instance->clips["Output"].picture = output.get();
                Arguments arguments;
                arguments.in.put("OfxPropTime", {18.0});
                arguments.in.put("OfxImageEffectPropRenderWindow", {0, 0, 64, 48});
                const Status status =
                    host.call(shared.plugin, "OfxImageEffectActionRender", instance.get(), &arguments);
                wrong += status != kOk || output->memory != expected ? 1 : 0;
                host.destroy(shared.plugin, std::move(instance));
                wrong += host.call(shared.plugin, "OfxActionUnload", nullptr) != kOk ? 1 : 0;
            }
        });
    }
    for (std::thread& each : threads) {
        each.join();
    }
    EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace lumiset::openfx::test
