#include "hostkit/gl/gpu_renderer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>

#include "hostkit/frame_buffer.h"
#include "hostkit/module.h"
#include "hostkit/parameter_store.h"
#include "tests/hostkit/fake_effect.h"

namespace lumiset::hostkit {
namespace {

// A host makes effects anew all the time, and a new one may get an old one's address: what the old one said of OpenGL
// must not be taken for the new one's word.
TEST(GPURenderer, KeepsAnEffectWhoseAnswerItRemembersAndGivesUpWhatNobodyElseHas) {
    std::optional<GLHost> gl;
    try {
        gl.emplace([](const std::string&) {});
    } catch (const GLError& error) {
        GTEST_SKIP() << "No OpenGL here, nothing is tested: " << error.what();
    }
    test::FakeEffect first;
    test::FakeEffect second;
    const FrameBuffer source(4, 4, kFormatBgra8);
    const FrameBuffer destination(4, 4, kFormatBgra8);
    {
        GPURenderer renderer(*gl);
        const auto render = [&](test::FakeEffect& effect) {
            const EffectDescription description = describeEffect(effect, 0);
            const ParameterStore values(description);
            RenderHost host(values, 0.0, nullptr);
            EXPECT_FALSE(renderer.render(effect, host, source.desc(), destination.desc(), FrameRenderInfo{}));
        };
        render(first);
        render(first);
        EXPECT_EQ(first.asked, 1);
        EXPECT_EQ(first.references, 2U);
        first.Release();
        render(second);
        EXPECT_EQ(first.references, 0U);
        EXPECT_EQ(second.references, 2U);
    }
    EXPECT_EQ(second.references, 1U);
}

TEST(GPURenderer, KeepsAFrameInTexturesBetweenEffects) {
    std::optional<GLHost> gl;
    try {
        gl.emplace([](const std::string& sentence) { ADD_FAILURE() << sentence; });
    } catch (const GLError& error) {
        GTEST_SKIP() << "No OpenGL here, nothing is tested: " << error.what();
    }
    const Module module;
    const EffectCatalogue catalogue(module.effectLibrary());
    std::vector<EffectStage> chain;
    for (const char* name : {"Color Fixer Pro", "Old TV", "Viewfinder", "Selective Focus"}) {
        const EffectDescription& effect = catalogue.effect(name);
        chain.push_back({ComPtr<IVideoGPUEffect>::adopt(module.effectLibrary().CreateEffect(effect.index)),
                         ParameterStore(effect)});
        chain.back().parameters.apply(effect.presets.back());
    }
    GPURenderer gpu(*gl);
    test::FakeEffect stranger;  // does not render here
    const EffectDescription description = describeEffect(stranger, 0);
    for (const PixelFormat format : {kFormatBgra8, kFormatArgb8, kFormatBgraFloat, kFormatArgbFloat}) {
        for (const bool flipped : {false, true}) {
            FrameBuffer source(40, 30, format);
            for (std::int32_t y = 0; y < 30; ++y) {
                for (std::int32_t i = 0; i < 160; ++i) {
                    isFloatFormat(format) ? reinterpret_cast<float*>(source.row(y))[i] =
                                                static_cast<float>((i * 7 + y * 13) % 256) / 255.0F
                                          : source.row(y)[i] = static_cast<std::uint8_t>((i * 7 + y * 13) % 256);
                }
            }
            const auto render = [&](bool atOnce) {
                FrameBuffer result(40, 30, format, {.flipped = flipped});
                Renderer renderer(chain, format);
                renderer.setFirstChoice([&](std::span<const EffectCall> calls, const VideoFrameDesc& from,
                                            const VideoFrameDesc& to, const FrameRenderInfo& info) {
                    EXPECT_EQ(calls.size(), atOnce ? chain.size() : calls.size());
                    return gpu.render(atOnce ? calls : calls.first(1), from, to, info);
                });
                renderer.render(source.desc(), result.desc(), {1.5});
                std::string bytes;
                for (std::int32_t y = 0; y < 30; ++y) {
                    bytes.append(reinterpret_cast<const char*>(result.row(y)), isFloatFormat(format) ? 640 : 160);
                }
                return bytes;
            };
            EXPECT_TRUE(render(true) == render(false)) << "format " << format << (flipped ? ", flipped" : "");
        }
    }
    // It stops in front of one that does not render, with the picture before it.
    const ParameterStore values(description);
    RenderHost host(values, 0.0);
    RenderHost first(chain[0].parameters, 0.0);
    const EffectCall calls[] = {{*chain[0].effect.get(), first}, {stranger, host}};
    FrameBuffer source(8, 8, kFormatBgra8);
    std::fill_n(source.row(0), 8 * source.desc().stride, std::uint8_t{90});
    const FrameBuffer alone(8, 8, kFormatBgra8);
    const FrameBuffer stopped(8, 8, kFormatBgra8);
    EXPECT_EQ(gpu.render(std::span(calls, 1), source.desc(), alone.desc(), {}), 1U);
    EXPECT_EQ(gpu.render(calls, source.desc(), stopped.desc(), {}), 1U);
    EXPECT_TRUE(std::equal(stopped.row(0), stopped.row(0) + 32, alone.row(0)));
}

}  // namespace
}  // namespace lumiset::hostkit
