// What the user is asked and told, seen through a stand-in for the program that shows dialogs.

#include <gtest/gtest.h>

#include <cstdlib>

#include "support/preset_saver.h"
#include "tests/presets/preset_effect.h"

namespace lumiset::test {
namespace {

class PresetDialogs : public ::testing::Test {
protected:
    PresetDialogs() {
        effect.entries = {PresetEntry{kParamSlider, {.slider = 0.25F}}};
        std::filesystem::create_directory(folder / "bin");
        ::setenv("PATH", ((folder / "bin").string() + ":/usr/bin:/bin").c_str(), 1);
    }

    /// Dialogs answer `path` and end with `status`; every program's arguments are kept.
    void answer(const std::string& path, int status, const char* program = "zenity") {
        const std::filesystem::path file = folder / "bin" / program;
        writeFile(file, "#!/bin/sh\nprintf '%s|' " + std::string(program) + " \"$@\" >>'" +
                            (folder / "asked").string() + "'\nprintf '\\n' >>'" + (folder / "asked").string() +
                            "'\nprintf '%s\\n' '" + path + "'\nexit " + std::to_string(status) + "\n");
        std::filesystem::permissions(file, std::filesystem::perms::owner_all);
    }
    std::string asked() {
        const std::string text = contentsOf(folder / "asked");
        std::filesystem::remove(folder / "asked");
        return text;
    }
    bool load(const wchar_t* path = nullptr) { return saver.LoadPreset(this, &effect, 2, path, &outcome); }
    bool save(const wchar_t* path = nullptr) { return saver.SavePreset(this, &effect, 2, path, &outcome); }

    CPresetSaver saver;  // on the stack, its count stays at 1
    PresetEffectStub effect;
    PresetOutcome outcome{};
    PresetFolder folder;
};

TEST_F(PresetDialogs, AskForTheFile) {
    answer((folder / "Soft.lumvc").string(), 0);
    EXPECT_TRUE(save());
    EXPECT_EQ(asked(),
              "zenity|--file-selection|--title=Save Preset|--file-filter=Preset Files (*.lumvc) | *.lumvc|--save|"
              "--confirm-overwrite|\n");
    EXPECT_TRUE(load());
    EXPECT_STREQ(outcome.name, "Soft");
    EXPECT_EQ(asked(), "zenity|--file-selection|--title=Load Preset|--file-filter=Preset Files (*.lumvc) | *.lumvc|\n");
    answer((folder / "Plain").string(), 0);
    EXPECT_TRUE(save());
    EXPECT_TRUE(std::filesystem::exists(folder / "Plain.lumvc")) << "the extension is added";
    answer((folder / "Soft").string(), 0);
    asked();
    EXPECT_TRUE(save());
    const std::string twice = asked();
    EXPECT_NE(twice.find("|--filename=" + (folder / "Soft.lumvc").string() + '|'), std::string::npos)
        << "a file that exists is not replaced unasked: " << twice;
}

TEST_F(PresetDialogs, TakeACancelledQuestionForNoFailure) {
    answer("", 1);
    EXPECT_FALSE(load());
    EXPECT_EQ(outcome.status, kPresetCancelled);
    EXPECT_FALSE(save());
    EXPECT_EQ(outcome.status, kPresetCancelled);
    EXPECT_EQ(asked().find("--error"), std::string::npos);
}

TEST_F(PresetDialogs, TellWhatWentWrong) {
    answer("", 0);
    const std::string error = "zenity|--error|--no-markup|--title=";
    EXPECT_FALSE(load((folder / "missing").wstring().c_str()));
    EXPECT_EQ(asked(), error +
                           "Preset load error|--text=Sorry, can't open the preset specified.\n"
                           "Possible reason: access denied or file is corrupted.|\n");
    EXPECT_FALSE(save((folder / "no" / "such").wstring().c_str()));
    EXPECT_EQ(asked(), error +
                           "Preset save error|--text=Sorry, can't save preset.\n"
                           "Possible reason: access denied or disk is full.|\n");
    effect.effectName = "Old TV";
    ASSERT_TRUE(save((folder / "tv").wstring().c_str()));
    effect.effectName = "Outline";
    EXPECT_FALSE(load((folder / "tv").wstring().c_str()));
    EXPECT_EQ(outcome.status, kPresetMismatched);
    EXPECT_EQ(asked(),
              error +
                  "Preset open warning|--text=Error trying to open a Old TV preset. This can only open Outline "
                  "presets. Please try again.|\n");
    EXPECT_FALSE(saver.LoadPreset(nullptr, &effect, 2, (folder / "tv").wstring().c_str(), &outcome));
    EXPECT_EQ(asked(), "") << "nobody to tell";
}

TEST_F(PresetDialogs, TryTheOtherDesktopsProgramAndFailWithoutAny) {
    ::setenv("PATH", (folder / "bin").c_str(), 1);
    EXPECT_FALSE(load());
    EXPECT_EQ(outcome.status, kPresetUnreadable);
    EXPECT_FALSE(save());
    EXPECT_EQ(outcome.status, kPresetNotSaved);
    answer((folder / "K.lumvc").string(), 0, "kdialog");
    EXPECT_TRUE(save());
    EXPECT_EQ(asked(), "kdialog|--title|Save Preset|--getsavefilename|.|Preset Files (*.lumvc)|\n");
}

}  // namespace
}  // namespace lumiset::test
