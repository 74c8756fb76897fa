// The user's settings, wherever this platform keeps them.

#include "platform/settings_store.h"

#include <gtest/gtest.h>

#include <iterator>
#include <optional>

#include "support/option_store.h"

namespace lumiset::test {
namespace {

TEST(Settings, KeepAnyTextUnderAnyName) {
    const std::string section = "Common\\Test";
    const std::string texts[] = {"plain", "",   " blanks ", "a=b",      "[c]",
                                 ";d",    "#e", "f\\x41\\", "g\nh\r\n", "\xC3\xBC;|"};
    for (const std::string& name : texts) {
        for (const std::string& value : texts) {
            EXPECT_EQ(platform::writeSetting(section, name, value), !name.empty());
        }
        EXPECT_TRUE(name.empty() || platform::writeSetting(section, name, name + name));
    }
    for (const std::string& name : texts) {
        EXPECT_EQ(platform::readSetting(section, name), name.empty() ? std::nullopt : std::optional(name + name))
            << name;
    }
    EXPECT_EQ(platform::readSettings(section).size(), std::size(texts) - 1);
    EXPECT_EQ(platform::readSetting("Common", "plain"), std::nullopt) << "another section";
    EXPECT_FALSE(platform::writeSetting(section, "a", std::string(1, '\0')));
    EXPECT_TRUE(platform::removeSettings(section));
    EXPECT_TRUE(platform::removeSettings(section)) << "they are gone, as was asked";
    EXPECT_TRUE(platform::readSettings(section).empty());
}

TEST(Settings, HoldOptionsAsYesAndNo) {
    const bool before = readOptions()[kKeyFramesVsPresets];
    for (const bool value : {true, false}) {
        EXPECT_TRUE(writeOption(kKeyFramesVsPresets, value));
        EXPECT_EQ(readOptions()[kKeyFramesVsPresets], value);
        EXPECT_EQ(platform::readSetting("Common", "Key Frames vs Presets"), value ? "yes" : "no");
    }
    EXPECT_TRUE(platform::writeSetting("Common", "Key Frames vs Presets", "Yes"));
    EXPECT_FALSE(readOptions()[kKeyFramesVsPresets]);
    EXPECT_TRUE(writeOption(kKeyFramesVsPresets, before));
}

}  // namespace
}  // namespace lumiset::test
