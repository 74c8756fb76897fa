// Loading the extension entry points, against a driver that lacks one thing or another.

#include <gtest/gtest.h>

#include "gpu/arb_helper.h"
#include "tests/gpu/fake_gl.h"

namespace lumiset::test {
namespace {

class ArbHelperTest : public ::testing::Test {
protected:
    void SetUp() override { resetFakeGL(); }

    [[nodiscard]] static bool wasLookedUp(const std::string& name) {
        for (const std::string& asked : fakeGL().lookedUp) {
            if (asked == name) {
                return true;
            }
        }
        return false;
    }
};

TEST_F(ArbHelperTest, FindsWholeWordsOfTheExtensionStringOnly) {
    const ARBHelper helper;
    const struct {
        const char* list;
        bool found;
    } rows[] = {
        {"GL_EXT_blend_color", true},
        {"GL_EXT_blend_color GL_B", true},
        {"GL_A GL_EXT_blend_color", true},
        {"GL_A GL_EXT_blend_color GL_B", true},
        {"GL_EXT_blend_color_more", false},
        {"more_GL_EXT_blend_color", false},
        {"GL_EXT_blend_color_more GL_EXT_blend_color", true},
        {"GL_EXT_blend_colo", false},
        {"", false},
    };
    for (const auto& row : rows) {
        fakeGL().extensions = row.list;
        EXPECT_EQ(helper.IsExtensionSupported("GL_EXT_blend_color"), row.found) << '"' << row.list << '"';
    }
    fakeGL().extensions = everyExtension();
    fakeGL().hasContext = false;
    EXPECT_FALSE(helper.IsExtensionSupported("GL_EXT_blend_color"));
}

TEST_F(ArbHelperTest, LoadsEverythingOnceInTheOrderOfTheRecord) {
    ARBHelper helper;
    ASSERT_TRUE(helper.Load(0));
    EXPECT_EQ(fakeGL().lookedUp.size(), kArbEntryNames.size());
    for (const ArbGroup& group : kArbGroups) {
        EXPECT_TRUE(helper.*group.flag) << (group.extension != nullptr ? group.extension : "AMD");
    }
    // Required groups first, framebuffer blit after the blend family although its entry lies before it.
    EXPECT_EQ(fakeGL().lookedUp[25], "glGenFramebuffersEXT");
    EXPECT_EQ(fakeGL().lookedUp[35], "glActiveTextureARB");
    EXPECT_EQ(fakeGL().lookedUp[37], "glBlendColorEXT");
    EXPECT_EQ(fakeGL().lookedUp[41], "glBlitFramebufferEXT");

    fakeGL().lookedUp.clear();
    EXPECT_TRUE(helper.Load(0));
    EXPECT_TRUE(fakeGL().lookedUp.empty());
}

TEST_F(ArbHelperTest, DoesWithoutTheOptionalGroups) {
    fakeGL().missing = {"wglGetGPUIDsAMD", "glDrawElementsInstancedEXT"};
    const std::string without = "GL_EXT_timer_query";
    fakeGL().extensions.erase(fakeGL().extensions.find(without), without.size());
    ARBHelper helper;
    EXPECT_TRUE(helper.Load(0));
    for (const ArbGroup& group : kArbGroups) {
        const bool lacking = group.flag == &ARBTable::hasAMDGPUAssociation ||
                             group.flag == &ARBTable::hasDrawInstanced || group.flag == &ARBTable::hasTimerQuery;
        EXPECT_EQ(helper.*group.flag, !lacking) << (group.extension != nullptr ? group.extension : "AMD");
    }
    EXPECT_NE(helper.entries[arbEntry("glDrawArraysInstancedEXT")], nullptr);
    EXPECT_FALSE(wasLookedUp("wglGetGPUInfoAMD"));
}

TEST_F(ArbHelperTest, StopsAtTheFirstRequiredGroupThatIsMissing) {
    fakeGL().missing = {"glCompileShaderARB"};
    ARBHelper noShaders;
    EXPECT_FALSE(noShaders.Load(0));
    EXPECT_EQ(fakeGL().lookedUp.size(), 4U);
    EXPECT_FALSE(noShaders.hasShaderObjects);
    // What was stored before stays, so the record counts as filled from now on.
    EXPECT_NE(noShaders.entries[2], nullptr);
    EXPECT_EQ(noShaders.entries[4], nullptr);
    EXPECT_TRUE(noShaders.Load(0));

    for (const char* missing : {"glGenFramebuffersEXT", "glMultiTexCoord2fARB"}) {
        resetFakeGL();
        fakeGL().missing = {missing};
        ARBHelper helper;
        EXPECT_FALSE(helper.Load(0)) << missing;
        EXPECT_FALSE(wasLookedUp("glBlendColorEXT")) << missing;
    }
}

TEST_F(ArbHelperTest, TriesTheWholeBlendFamilyBeforeItGivesUp) {
    const std::string without = "GL_EXT_blend_minmax";
    fakeGL().extensions.erase(fakeGL().extensions.find(without), without.size());
    ARBHelper helper;
    EXPECT_FALSE(helper.Load(0));
    EXPECT_TRUE(helper.hasBlendColor);
    EXPECT_FALSE(helper.hasBlendMinmax);
    EXPECT_TRUE(helper.hasBlendFuncSeparate);
    EXPECT_TRUE(helper.hasBlendEquationSeparate);
    EXPECT_FALSE(wasLookedUp("glBlitFramebufferEXT"));
}

}  // namespace
}  // namespace lumiset::test
