// A frame's way through an effect, by the calls that reach a host: Outline stands for all effects.

#include <gtest/gtest.h>

#include "effects/effect_list.h"
#include "host/pixel_format.h"
#include "tests/gpu/fake_gpu_host.h"

namespace lumiset::test {
namespace {

using Calls = std::vector<std::string>;

class FramePathTest : public ::testing::Test {
protected:
    FramePathTest() {
        resetFakeGL();
        m_gpu = std::make_unique<FakeGPUHost>();
        m_gpu->uniforms = {"SwapChannels", "blurSize",         "isOdd",           "colors", "opacity", "step",
                           "radius",       "Texture0_texture", "Texture1_texture"};
        m_host = std::make_unique<test::ValueHost>(outlineHost(m_gpu.get()));
        m_source = m_gpu->texture("source", 60, 40, kFormatArgb8);
        m_destination = m_gpu->texture("destination", 60, 40, kFormatArgb8);
        m_outline = makeOutline();
    }
    ~FramePathTest() override {
        m_outline->Release();
        EXPECT_EQ(m_gpu->live, 0);
        EXPECT_EQ(m_gpu->references, 0);
    }

    bool render(const FrameRenderInfo* info = nullptr) {
        fakeGL().calls.clear();
        return m_outline->ProcessFrameGPU(0, m_host.get(), m_gpu.get(), &m_source, nullptr, &m_destination, info);
    }

    /// The targets, uniforms and textures of every pass.
    static Calls passes() {
        Calls found;
        for (const std::string& call : fakeGL().calls) {
            if (call.rfind("Target ", 0) == 0) {
                found.push_back(call.substr(7, call.size() - 9));
            } else if (call.rfind("Set ", 0) == 0 && !found.empty()) {
                found.back() += ", " + call.substr(4);
            }
        }
        return found;
    }
    static bool drewNothing() {
        for (const std::string& call : fakeGL().calls) {
            if (call.rfind("Begin", 0) == 0 || call.rfind("Target", 0) == 0) {
                return false;
            }
        }
        return true;
    }

    std::unique_ptr<FakeGPUHost> m_gpu;
    std::unique_ptr<test::ValueHost> m_host;
    GPUTexture m_source;
    GPUTexture m_destination;
    IVideoGPUEffect* m_outline;
};

TEST_F(FramePathTest, DrawsOutlineInItsPasses) {
    m_source.flipped = 1;
    FrameRenderInfo info{};
    info.flags = FrameRenderInfo::kHasField;
    ASSERT_TRUE(render(&info));
    EXPECT_EQ(
        passes(),
        (Calls{"T0, SwapChannels 1, Texture0_texture source",
               "T1, SwapChannels 0, step 0, radius 3 1, Texture0_texture T0",
               "T0, SwapChannels 0, step 1, radius 3 1, Texture0_texture T1",
               "T1, blurSize 1, isOdd 1, Texture0_texture T0", "T0, blurSize 3, isOdd 0, Texture0_texture T1",
               "T1, SwapChannels 1, colors 0.2 0.8 0, opacity 0.75, Texture0_texture source, Texture1_texture T0",
               "none", "destination, SwapChannelsDst 1, Tex T1, texCoordScale0 1 1, texCoordShift0 0 0", "none"}));
    EXPECT_EQ(fakeGL().calls[0], "CreateTexture 60 40 0");
    EXPECT_EQ(std::count(fakeGL().calls.begin(), fakeGL().calls.end(), "TargetState 0"), 1);
    EXPECT_EQ(fakeGL().calls.back(), "Disable 3042");
    EXPECT_EQ(m_destination.format, kFormatArgb8);
}

TEST_F(FramePathTest, SoftensByThreePixelsAtLeastAndByTheAspectOnceMore) {
    FrameRenderInfo info{};
    info.field = FrameRenderInfo::kWholeFrame;
    info.flags = FrameRenderInfo::kHasPixelAspect;
    const struct {
        double aspect;
        const char* vertical;
        const char* horizontal;
    } rows[] = {
        {1.0, "blurSize 3, isOdd 0", "blurSize 3, isOdd 0"},   // 6 by 6
        {2.0, "blurSize 3, isOdd 0", "blurSize 6, isOdd 0"},   // 6 by 12 after the aspect
        {0.25, "blurSize 3, isOdd 0", "blurSize 1, isOdd 1"},  // 24 * 0.25 and the least
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.aspect);
        info.pixelAspect = row.aspect;
        ASSERT_TRUE(render(&info));
        Calls blurs;
        for (const std::string& pass : passes()) {
            if (const std::size_t at = pass.find("blurSize"); at != std::string::npos) {
                blurs.push_back(pass.substr(at, 19));
            }
        }
        EXPECT_EQ(blurs, (Calls{row.vertical, row.horizontal}));
    }
}

TEST_F(FramePathTest, WorksAtTheSizeThatBothFramesHave) {
    m_destination = m_gpu->texture("destination", 80, 30, kFormatBgra8);
    ASSERT_TRUE(render());
    EXPECT_EQ(fakeGL().calls[0], "CreateTexture 60 30 0");
    EXPECT_EQ(m_destination.width, 80);
    EXPECT_EQ(m_destination.height, 30);
    EXPECT_EQ(passes()[7].substr(0, 30), "destination, SwapChannelsDst 0");
}

TEST_F(FramePathTest, RefusesWhatItCannotRender) {
    const auto refuses = [&](auto change) {
        resetFakeGL();
        const GPUTexture source = m_source;
        const GPUTexture destination = m_destination;
        change();
        EXPECT_FALSE(render());
        EXPECT_TRUE(drewNothing());
        m_source = source;
        m_destination = destination;
    };
    for (const std::int32_t format : {2, 6, 7, 8, 9, -1}) {
        SCOPED_TRACE(format);
        refuses([&] { m_source.format = format; });
    }
    refuses([&] { m_source.handle = nullptr; });
    refuses([&] { m_destination.handle = nullptr; });
    refuses([&] { m_source.width = 0; });
    EXPECT_FALSE(m_outline->ProcessFrameGPU(0, nullptr, m_gpu.get(), &m_source, nullptr, &m_destination, nullptr));
    EXPECT_FALSE(m_outline->ProcessFrameGPU(0, m_host.get(), nullptr, &m_source, nullptr, &m_destination, nullptr));
    EXPECT_FALSE(m_outline->ProcessFrameGPU(0, m_host.get(), m_gpu.get(), nullptr, nullptr, &m_destination, nullptr));
    EXPECT_FALSE(m_outline->ProcessFrameGPU(0, m_host.get(), m_gpu.get(), &m_source, nullptr, nullptr, nullptr));
    test::ValueHost withoutGL;
    EXPECT_FALSE(m_outline->ProcessFrameGPU(0, &withoutGL, m_gpu.get(), &m_source, nullptr, &m_destination, nullptr));
    EXPECT_FALSE(m_outline->InitGPU(&withoutGL, m_gpu.get(), nullptr, 0));
    EXPECT_FALSE(m_outline->InitGPU(nullptr, m_gpu.get(), nullptr, 0));
}

TEST_F(FramePathTest, FailsWithoutATraceAtEveryCreation) {
    const GPUTexture before = m_destination;
    int failAt = 0;
    for (bool rendered = false; !rendered; ++failAt) {
        ASSERT_LT(failAt, 50);
        SCOPED_TRACE(failAt);
        m_gpu->failAt = failAt;
        m_gpu->creations = 0;
        rendered = render();
        EXPECT_EQ(m_gpu->live, 0);
        EXPECT_EQ(m_gpu->references, 0);
        EXPECT_EQ(m_destination.format, before.format);
        EXPECT_EQ(fakeGL().calls.back(), "Disable 3042");  // the blend state is back
        EXPECT_TRUE(rendered || drewNothing());
    }
    EXPECT_EQ(failAt, 10);  // two textures, six programs of the effect's and the copy
}

TEST_F(FramePathTest, UnbindsItsTargetWhenAPassCannotBeDrawn) {
    m_gpu->refusedTargets = 1;
    EXPECT_FALSE(render());
    EXPECT_EQ(passes(), (Calls{"T0", "none"}));
}

TEST_F(FramePathTest, TriesTheMainProgramAlone) {
    GPUProgramSet status{9, 9, 9};
    EXPECT_TRUE(m_outline->InitGPU(m_host.get(), m_gpu.get(), &status, 0));
    EXPECT_EQ(m_gpu->creations, 1);
    EXPECT_EQ(status.compiled, 1U);
    EXPECT_TRUE(m_outline->InitGPU(m_host.get(), m_gpu.get(), nullptr, 0));
    m_gpu->failAt = m_gpu->creations;
    EXPECT_FALSE(m_outline->InitGPU(m_host.get(), m_gpu.get(), &status, 0));
    EXPECT_EQ(status.compiled, 0U);
}

}  // namespace
}  // namespace lumiset::test
