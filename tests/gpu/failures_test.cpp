// What a host or a driver may refuse in the middle of a frame, for every preset of every effect: then nothing is drawn
// and nothing kept, or the picture is the same.

#include <functional>
#include <new>

#include "effects/effect_list.h"
#include "tests/gpu/fake_gpu_host.h"
#include "tests/support/effect_tester.h"

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    if (lumiset::test::arraysToRefuse > 0) {
        --lumiset::test::arraysToRefuse;
        return nullptr;
    }
    try {
        return ::operator new[](size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

namespace lumiset::test {
namespace {

/// What one frame came to.
struct Outcome {
    bool rendered;
    bool refused;                      ///< what was to be refused was asked for
    bool touched;                      ///< something was drawn into the destination
    std::vector<std::string> drawing;  ///< targets, programs, uniforms and corners, in order
};

using Prepare = std::function<void(FakeGPUHost&)>;

Outcome renderFrame(const EffectTester& tester, ValueHost host, const Prepare& prepare) {
    resetFakeGL();
    FakeGPUHost gpu;
    prepare(gpu);
    host.offers = static_cast<IHostGL*>(&gpu);
    const GPUTexture source = gpu.texture("source", 64, 40, kFormatArgb8);
    const GPUTexture given = gpu.texture("destination", 64, 40, kFormatArgb8);
    GPUTexture destination = given;
    const FrameRenderInfo info = frameInfo(1.5);
    Outcome outcome{};
    outcome.rendered = tester.effect().ProcessFrameGPU(0, &host, &gpu, &source, nullptr, &destination, &info);
    outcome.refused = (gpu.failAt != FakeGPUHost::kNever && gpu.creations > gpu.failAt) ||
                      (gpu.refusedTargets > 0 && gpu.targetCalls > gpu.refuseTargetsFrom);
    EXPECT_EQ(arraysToRefuse, 0);
    EXPECT_EQ(gpu.live, 0);
    EXPECT_EQ(gpu.references, 0);
    EXPECT_EQ(destination.format, given.format);
    bool isDestination = false;
    int targets = 0;
    for (const std::string& call : fakeGL().calls) {
        if (call.rfind("Target ", 0) == 0 && !gpu.refusesTarget(targets++)) {
            isDestination = call == "Target destination 0";
        }
        outcome.touched = outcome.touched || (isDestination && call.rfind("Vertex3f ", 0) == 0);
        for (const char* kind : {"Target ", "Use ", "Set ", "Vertex3f "}) {
            if (call.rfind(kind, 0) == 0) {
                outcome.drawing.push_back(call);
            }
        }
    }
    return outcome;
}

/// Calls `check(tester, host)` for every preset of every effect.
template <class Check>
void forEveryPreset(const Check& check) {
    for (const auto make : kEffects) {
        const EffectTester tester(Held<IVideoGPUEffect>{make()});
        for (std::uint32_t preset = 0; preset < tester.presetCount(); ++preset) {
            SCOPED_TRACE(std::string(tester.effect().GetEffectName()) + ", " + tester.effect().GetPresetName(preset));
            check(tester, tester.presetHost(preset));
        }
    }
}

TEST(Failures, OfACreationLeaveNothingDrawn) {
    using Refusal = FakeGPUHost::Refusal;
    forEveryPreset([](const EffectTester& tester, const ValueHost& host) {
        for (const Refusal refusal : {Refusal::kFalse, Refusal::kNothingMade, Refusal::kNoMemory}) {
            for (int failAt = 0;; ++failAt) {
                SCOPED_TRACE(::testing::Message() << "creation " << failAt << ", way " << static_cast<int>(refusal));
                const Outcome outcome = renderFrame(tester, host, [&](FakeGPUHost& gpu) {
                    gpu.failAt = failAt;
                    gpu.refusal = refusal;
                });
                if (!outcome.refused) {
                    EXPECT_TRUE(outcome.rendered);
                    break;
                }
                // Textures have no uniforms, and the last program is told of none.
                EXPECT_TRUE(!outcome.rendered || refusal == Refusal::kNoMemory);
                EXPECT_EQ(outcome.rendered, !outcome.drawing.empty());
                ASSERT_LT(failAt, 50);
            }
        }
    });
}

TEST(Failures, OfATargetLeaveTheDestinationOrTheSamePicture) {
    forEveryPreset([](const EffectTester& tester, const ValueHost& host) {
        const Outcome whole = renderFrame(tester, host, [](FakeGPUHost&) {});
        ASSERT_TRUE(whole.rendered && whole.touched);
        for (const int times : {1, 1000}) {
            for (int failAt = 0;; ++failAt) {
                SCOPED_TRACE(::testing::Message() << "target " << failAt << ", " << times << " times");
                const Outcome outcome = renderFrame(tester, host, [&](FakeGPUHost& gpu) {
                    gpu.refuseTargetsFrom = failAt;
                    gpu.refusedTargets = times;
                });
                if (!outcome.refused) {
                    EXPECT_TRUE(outcome.rendered);
                    break;
                }
                EXPECT_EQ(outcome.touched, outcome.rendered);
                EXPECT_TRUE(!outcome.rendered || outcome.drawing == whole.drawing);
                ASSERT_LT(failAt, 200);
            }
        }
    });
}

TEST(Failures, OfAFunctionOfOpenGLLeaveNothingDrawnOrTheSamePicture) {
    forEveryPreset([](const EffectTester& tester, const ValueHost& host) {
        const Outcome whole = renderFrame(tester, host, [](FakeGPUHost&) {});
        ASSERT_TRUE(whole.rendered);
        for (const std::size_t entry : {arbEntry("glMultiTexCoord2fARB"), arbEntry("glUseProgramObjectARB")}) {
            SCOPED_TRACE(entry);
            const Outcome outcome = renderFrame(tester, host, [&](FakeGPUHost& gpu) { gpu.withoutEntry(entry); });
            EXPECT_TRUE(outcome.rendered ? outcome.drawing == whole.drawing : outcome.drawing.empty());
        }
    });
    // Those that no extension has are looked up by each effect once.
    for (const char* name :
         {"glClearDepth", "glDepthFunc", "glColor3f", "glMatrixMode", "glLoadIdentity", "glOrtho", "glTranslated",
          "glBegin", "glEnd", "glTexCoord2f", "glVertex3f", "glClearColor", "glClear"}) {
        for (const auto make : kEffects) {
            const EffectTester tester(Held<IVideoGPUEffect>{make()});
            const Outcome outcome = renderFrame(tester, {}, [&](FakeGPUHost&) { fakeGL().missing.insert(name); });
            EXPECT_FALSE(outcome.rendered) << name;
            EXPECT_TRUE(outcome.drawing.empty()) << name;
        }
    }
}

}  // namespace
}  // namespace lumiset::test
