// Passes, programs and state, by the calls that reach a host.

#include "gpu/gpu_helper.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/gpu/fake_gpu_host.h"

namespace lumiset::test {
namespace {

using Calls = std::vector<std::string>;

class Helper final : public GPUHelper {
public:
    using GPUHelper::loadCore;
};

class GPUHelperTest : public ::testing::Test {
protected:
    GPUHelperTest() {
        resetFakeGL();
        m_host = std::make_unique<FakeGPUHost>();
        m_host->uniforms = {"vRTSize", "vRT2NORM_Scale", "vRT2NORM_Shift", "blurSize", "isOdd", "Texture0_texture"};
        EXPECT_TRUE(m_helper.loadCore());
        m_helper.Bind(m_host.get(), m_host.get());
    }
    ~GPUHelperTest() override {
        m_helper.Bind(nullptr, nullptr);
        EXPECT_EQ(m_host->live, 0);
        EXPECT_EQ(m_host->references, 0);
    }

    void make(ShaderProgram& program) { ASSERT_TRUE(m_helper.CreateProgram(kText, kText, program)); }

    /// The calls since the last time.
    static Calls taken() { return std::exchange(fakeGL().calls, {}); }
    /// Those that set a uniform whose name begins so.
    static Calls uniformsSet(const std::string& prefix) {
        Calls found;
        for (const std::string& call : taken()) {
            if (call.rfind("Set " + prefix, 0) == 0) {
                found.push_back(call.substr(4));
            }
        }
        return found;
    }

    static constexpr ProgramText kText{"void", 4, 0, 0, 0, 0};
    std::unique_ptr<FakeGPUHost> m_host;
    Helper m_helper;
};

TEST_F(GPUHelperTest, PutsTheBlendStateBackAndLeavesBlendingOff) {
    taken();
    m_helper.Bind(nullptr, nullptr);
    // The host answers every state with its own name: equations 8009 and 883D, sources C9 and CB, destinations.
    EXPECT_EQ(taken(), (Calls{"BlendColor 0.25 0.5 0.75 1", "BlendEquation 32777 34877",
                              "BlendFunc 32969 32968 32971 32970", "Disable 3042"}));
    m_helper.Bind(nullptr, nullptr);
    EXPECT_EQ(taken(), Calls{});
    m_helper.Bind(m_host.get(), m_host.get());
}

TEST_F(GPUHelperTest, BeginsARenderInAWorldOfTenByTenUnits) {
    taken();
    m_helper.BeginRender(10.0, 10.0);
    EXPECT_EQ(taken(), (Calls{"ClearDepth 0", "DepthFunc 516", "Enable 2929", "Disable 3008", "Disable 3042",
                              "Disable 2896", "Disable 3553", "Color3f 1 1 1", "MatrixMode 5889", "LoadIdentity",
                              "Ortho -5 5 -5 5 2 12", "MatrixMode 5888", "LoadIdentity", "Translated 0 0 -5"}));
}

TEST_F(GPUHelperTest, DrawsAStripOverTheRectangleAndUpsideDown) {
    const GPUTexture texture = m_host->texture("in", 4, 4);
    m_helper.BeginRender(10.0, 10.0);
    taken();
    ASSERT_TRUE(m_helper.DrawQuad(texture, false, nullptr));
    EXPECT_EQ(taken(),
              (Calls{"Begin 5", "TexCoord2f 0 0", "Vertex3f -5 -5 -1e-05", "TexCoord2f 0 1", "Vertex3f -5 5 -1e-05",
                     "TexCoord2f 1 0", "Vertex3f 5 -5 -1e-05", "TexCoord2f 1 1", "Vertex3f 5 5 -1e-05", "End"}));
    const QuadRect rect{0.25, 0.0, 0.5, 0.75};
    ASSERT_TRUE(m_helper.DrawQuad2(texture, texture, true, &rect));
    EXPECT_EQ(taken(), (Calls{"Begin 5", "MultiTexCoord2fARB 33984 0 0", "Vertex3f -2.5 2.5 -1e-05",
                              "MultiTexCoord2fARB 33984 0 1", "Vertex3f -2.5 -5 -1e-05", "MultiTexCoord2fARB 33984 1 0",
                              "Vertex3f 0 2.5 -1e-05", "MultiTexCoord2fARB 33984 1 1", "Vertex3f 0 -5 -1e-05", "End"}));
}

TEST_F(GPUHelperTest, BlursTheSecondDirectionFirst) {
    const GPUTexture in = m_host->texture("in", 9, 6);
    const GPUTexture between = m_host->texture("between", 9, 6);
    const GPUTexture out = m_host->texture("out", 9, 6);
    ShaderProgram first;
    ShaderProgram second;
    make(first);
    make(second);
    taken();
    ASSERT_TRUE(m_helper.SeparableBlur(7, 4, in, between, out, first, second));
    Calls calls = taken();
    std::erase_if(calls, [](const std::string& call) {
        return call.rfind("Vertex", 0) == 0 || call.rfind("TexCoord", 0) == 0 || call.rfind("Set vRT", 0) == 0;
    });
    EXPECT_EQ(calls, (Calls{"Target between 0", "Use P1", "Set blurSize 2", "Set isOdd 0", "Set Texture0_texture in",
                            "Begin 5", "End", "Target out 0", "Use P0", "Set blurSize 3", "Set isOdd 1",
                            "Set Texture0_texture between", "Begin 5", "End"}));
    m_helper.ReleaseProgram(first);
    m_helper.ReleaseProgram(second);
}

TEST_F(GPUHelperTest, HalvesTheSamplesBelowEightAndTriesAgain) {
    const GPUTexture target = m_host->texture("out", 5, 5);
    m_host->refusedTargets = 2;
    taken();
    EXPECT_TRUE(m_helper.SetRenderTarget(&target, true, 0, 0));
    EXPECT_EQ(taken(), (Calls{"Target out 4", "Target out 4", "Target out 4"}));
    m_host->refusedTargets = 1 << 30;
    EXPECT_FALSE(m_helper.SetRenderTarget(&target, true, 0, 0));
    EXPECT_EQ(taken().size(), 1000U) << "and does not try for ever";
    m_host->maxSamples = 0;
    EXPECT_FALSE(m_helper.SetRenderTarget(&target, true, 0, 0));
    EXPECT_EQ(taken(), Calls{"Target out 0"}) << "no other number is left";
    m_host->refusedTargets = 0;
}

TEST_F(GPUHelperTest, CopiesToTheTargetInItsOrders) {
    GPUTexture in = m_host->texture("in", 16, 8);
    in.width = 12;
    in.height = 6;
    in.xOffset = 4;
    in.yOffset = 2;
    for (const bool turned : {false, true}) {
        GPUTexture out = m_host->texture("out", 12, 6, turned ? 4 : 3);
        out.flipped = turned ? 1 : 0;
        m_helper.BeginRender(10.0, 10.0);
        taken();
        ASSERT_TRUE(m_helper.CopyToTarget(in, out));
        const std::string top = turned ? "5" : "-5";
        const std::string bottom = turned ? "-5" : "5";
        EXPECT_EQ(taken(),
                  (Calls{"Target out 0", turned ? "Use P1" : "Use P0",
                         std::string("Set SwapChannelsDst ") + (turned ? "1" : "0"), "Set Tex in",
                         "Set texCoordScale0 0.75 0.75", "Set texCoordShift0 0.25 0.25", "Begin 5", "TexCoord2f 0 0",
                         "Vertex3f -5 " + top + " -1e-05", "TexCoord2f 0 1", "Vertex3f -5 " + bottom + " -1e-05",
                         "TexCoord2f 1 0", "Vertex3f 5 " + top + " -1e-05", "TexCoord2f 1 1",
                         "Vertex3f 5 " + bottom + " -1e-05", "End", "UseProgramObjectARB 0", "Target none 0"}));
    }
    m_host->failAt = m_host->creations;
    EXPECT_FALSE(m_helper.CopyToTarget(in, m_host->texture("out", 12, 6)));
    EXPECT_EQ(taken(), Calls{});
}

TEST_F(GPUHelperTest, ChecksEveryPairOfTextsAndKeepsNone) {
    const ProgramText* const three[] = {&kText, &kText, &kText, nullptr};
    const ProgramText* const two[] = {&kText, &kText, nullptr};
    EXPECT_TRUE(m_helper.CheckPrograms(m_host.get(), three, two));
    EXPECT_EQ(m_host->creations, 2);
    m_host->failAt = 3;
    GPUProgramSet set{7, 7, 7};
    m_helper.LoadPrograms(set, m_host.get(), three, three);
    EXPECT_EQ(m_host->creations, 4);
    EXPECT_EQ(set.reserved0, 0U);
    EXPECT_EQ(set.compiled, 0U);
    EXPECT_EQ(set.filled, 1U);
    EXPECT_FALSE(m_helper.CheckPrograms(nullptr, two, two));
    EXPECT_TRUE(fakeGL().lookedUp.empty());  // the host's table was taken over
}

TEST_F(GPUHelperTest, KnowsTheChannelOrdersOfThreeDepths) {
    const std::int32_t plain[][2] = {{0, 0}, {1, 0}, {3, 3}, {4, 3}, {8, 8}, {9, 8}};
    for (const auto& [format, same] : plain) {
        EXPECT_EQ(PlainFormat(format), same);
        EXPECT_EQ(NeedsChannelSwap({nullptr, format, 1, 1, 1, 1, 0, 0, 0}), format != same);
    }
}

TEST_F(GPUHelperTest, SetsOnlyUniformsThatARegularProgramHas) {
    ShaderProgram regular;
    ShaderProgram other(false);
    make(regular);
    make(other);
    taken();
    EXPECT_FALSE(regular.SetFloat("removed", 1.0F));
    EXPECT_FALSE(regular.SetFloat("blurSiz", 1.0F));
    EXPECT_FALSE(regular.HasUniform(nullptr));
    EXPECT_EQ(taken(), Calls{});
    EXPECT_TRUE(regular.SetInt("blurSize", 3));
    EXPECT_TRUE(other.SetFloat3("removed", 1.0F, 2.0F, 3.0F));
    EXPECT_EQ(taken(), (Calls{"Set blurSize 3", "Set removed 1 2 3"}));
    m_helper.ReleaseProgram(regular);
    m_helper.ReleaseProgram(other);
    EXPECT_FALSE(regular.Begin(4, 4));
    EXPECT_FALSE(regular.SetInt("blurSize", 3));
}

TEST_F(GPUHelperTest, TellsAProgramTheSizeOfItsTarget) {
    ShaderProgram program;
    make(program);
    const struct {
        std::int32_t width, height;
        Calls expected;
    } rows[] = {
        {5, 2, {"vRTSize 5 2", "vRT2NORM_Scale 1.25 2", "vRT2NORM_Shift -0.125 -0.5"}},
        {1, 3, {"vRTSize 1 3", "vRT2NORM_Scale 0 1.5", "vRT2NORM_Shift 0.5 -0.25"}},
        {0, -4, {"vRTSize 1 1", "vRT2NORM_Scale 0 0", "vRT2NORM_Shift 0.5 0.5"}},
    };
    for (const auto& row : rows) {
        taken();
        ASSERT_TRUE(program.Begin(row.width, row.height));
        EXPECT_EQ(uniformsSet("vRT"), row.expected);
    }
    m_helper.ReleaseProgram(program);
}

TEST_F(GPUHelperTest, MapsAStageForSizesOfOneTwoAndMore) {
    const char* const names[] = {"vScale",           "vShift",           "vScaleTEXi",
                                 "vShiftTEXi",       "vRT2TEX_Scale",    "vRT2TEX_Shift",
                                 "vRT2TEXi_Scale",   "vRT2TEXi_Shift",   "vTEX2NORM_Scale",
                                 "vTEX2NORM_Shift",  "vTEX2TEXi_Scale",  "vTEX2TEXi_Shift",
                                 "vTEXi2NORM_Scale", "vTEXi2NORM_Shift", "vNORM2TEXi_Scale",
                                 "texelSize",        "roiLeftTop",       "roiWH"};
    m_host->uniforms = {"Texture2_texture"};
    for (const char* name : names) {
        m_host->uniforms.push_back(std::string("Texture2.") + name);
    }
    ShaderProgram program;
    make(program);

    // 5 of 8 columns from the second on, drawn to 5 columns; 3 of 4 rows from the first on, drawn to 9 rows.
    GPUTexture texture = m_host->texture("in", 8, 4);
    texture.width = 5;
    texture.height = 3;
    texture.xOffset = 1;
    ASSERT_TRUE(program.Begin(5, 9));
    taken();
    EXPECT_FALSE(program.SetTextureStage(2, texture, 0.0F, 0.0F, 1.0F, 1.0F));
    EXPECT_EQ(
        uniformsSet("Texture2"),
        (Calls{"Texture2_texture in", "Texture2.vScale 0.5 0.5", "Texture2.vShift 0.1875 0.125",
               "Texture2.vScaleTEXi 0.125 0.25", "Texture2.vShiftTEXi 0.1875 0.125", "Texture2.vRT2TEX_Scale 1 0.75",
               "Texture2.vRT2TEX_Shift 0 0.125", "Texture2.vRT2TEXi_Scale 5 2.25",
               "Texture2.vRT2TEXi_Shift -0.5 -0.125", "Texture2.vTEX2NORM_Scale 1.25 1.5",
               "Texture2.vTEX2NORM_Shift -0.125 -0.25", "Texture2.vTEX2TEXi_Scale 5 3",
               "Texture2.vTEX2TEXi_Shift -0.5 -0.5", "Texture2.vTEXi2NORM_Scale 0.25 0.5",
               "Texture2.vTEXi2NORM_Shift 0 0", "Texture2.vNORM2TEXi_Scale 4 2", "Texture2.texelSize 0.25 0.5",
               "Texture2.roiLeftTop 0.1875 0.125", "Texture2.roiWH 0.5 0.5"}));

    // A stage keeps its first texture until the next pass; stages end at 7.
    EXPECT_FALSE(program.SetTextureStage(2, m_host->texture("late", 8, 4), 0.0F, 0.0F, 1.0F, 1.0F));
    EXPECT_FALSE(program.SetTextureStage(8, texture, 0.0F, 0.0F, 1.0F, 1.0F));
    EXPECT_EQ(taken(), Calls{});

    // One column of one, two rows of two.
    ASSERT_TRUE(program.Begin(1, 2));
    taken();
    program.SetTextureStage(2, m_host->texture("small", 1, 2), 0.0F, 0.0F, 1.0F, 1.0F);
    EXPECT_EQ(
        uniformsSet("Texture2"),
        (Calls{"Texture2_texture small", "Texture2.vScale 0 0.5", "Texture2.vShift 0.5 0.25",
               "Texture2.vScaleTEXi 0 0.5", "Texture2.vShiftTEXi 0.5 0.25", "Texture2.vRT2TEX_Scale 0 1",
               "Texture2.vRT2TEX_Shift 0.5 0", "Texture2.vRT2TEXi_Scale 0 2", "Texture2.vRT2TEXi_Shift 0 -0.5",
               "Texture2.vTEX2NORM_Scale 0 2", "Texture2.vTEX2NORM_Shift 0.5 -0.5", "Texture2.vTEX2TEXi_Scale 1 2",
               "Texture2.vTEX2TEXi_Shift -0.5 -0.5", "Texture2.vTEXi2NORM_Scale 0 1", "Texture2.vTEXi2NORM_Shift 0.5 0",
               "Texture2.vNORM2TEXi_Scale 0 1", "Texture2.texelSize inf 1", "Texture2.roiLeftTop 0.5 0.25",
               "Texture2.roiWH 0 0.5"}));

    // One column in a wider allocation: nothing that a shader reads from may be undefined.
    ASSERT_TRUE(program.Begin(1, 1));
    GPUTexture narrow = m_host->texture("narrow", 4, 4);
    narrow.width = 1;
    narrow.height = 1;
    taken();
    program.SetTextureStage(2, narrow, 0.0F, 0.0F, 1.0F, 1.0F);
    const Calls set = uniformsSet("Texture2.vS");
    EXPECT_EQ(set, (Calls{"Texture2.vScale 0 0", "Texture2.vShift 0.125 0.125", "Texture2.vScaleTEXi 0 0",
                          "Texture2.vShiftTEXi 0.125 0.125"}));
    m_helper.ReleaseProgram(program);
}

TEST_F(GPUHelperTest, SetsTheStagesOfAPassUnlessToldNotTo) {
    m_host->uniforms = {"Texture0_texture", "Texture2_texture"};
    ShaderProgram program;
    make(program);
    const GPUTexture a = m_host->texture("a", 2, 2);
    const GPUTexture c = m_host->texture("c", 2, 2);
    ASSERT_TRUE(m_helper.UseProgram(program));
    taken();
    m_helper.ApplyStages(&a, nullptr, &c);
    EXPECT_EQ(taken(), (Calls{"Set Texture0_texture a", "Set Texture2_texture c"}));
    program.SetVerification(true, true, false);
    ASSERT_TRUE(m_helper.UseProgram(program));
    taken();
    m_helper.ApplyStages(&a, nullptr, &c);
    EXPECT_EQ(taken(), Calls{});
    bool first = false;
    bool second = false;
    bool third = true;
    program.GetVerification(first, second, third);
    EXPECT_TRUE(first && second && !third);
    m_helper.ReleaseProgram(program);
}

}  // namespace
}  // namespace lumiset::test
