#include "hostkit/gl/gpu_renderer.h"

#include <gtest/gtest.h>

#include <optional>

#include "hostkit/frame_buffer.h"
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

}  // namespace
}  // namespace lumiset::hostkit
