// What the user is asked and told, answered by a thread that works the system's own windows as a person would.

#include <gtest/gtest.h>
#include <windows.h>
//
#include <dlgs.h>

#include <chrono>
#include <functional>
#include <thread>

#include "support/preset_saver.h"
#include "tests/presets/preset_effect.h"

namespace lumiset::test {
namespace {

std::wstring titleOf(HWND window) {
    wchar_t text[200];
    return {text, static_cast<std::size_t>(GetWindowTextW(window, text, 200))};
}

/// This process's dialog of that title, once it is there and not `other`; null when none comes.
HWND dialogCalled(const wchar_t* title, HWND other = nullptr) {
    constexpr int kLooks = 500;
    for (int i = 0; i < kLooks; ++i) {
        for (HWND each = nullptr; (each = FindWindowExW(nullptr, each, L"#32770", title)) != nullptr;) {
            DWORD process = 0;
            GetWindowThreadProcessId(each, &process);
            if (process == GetCurrentProcessId() && each != other && IsWindowVisible(each) != FALSE) {
                return each;
            }
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    ADD_FAILURE() << "no such dialog";
    return nullptr;
}

void press(HWND dialog, int button) {
    PostMessageW(dialog, WM_COMMAND, static_cast<WPARAM>(button), 0);
}

void enter(HWND dialog, const std::filesystem::path& file) {
    HWND name = GetDlgItem(dialog, cmb13);  // systems differ in what they have there
    name = name != nullptr ? name : GetDlgItem(dialog, edt1);
    SendMessageW(name, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(file.c_str()));
    EXPECT_EQ(titleOf(name), file.wstring());
    press(dialog, IDOK);
}

std::wstring messageIn(HWND box) {
    std::wstring text;
    for (HWND each = nullptr; (each = FindWindowExW(box, each, L"Static", nullptr)) != nullptr;) {
        text += titleOf(each);
    }
    return text;
}

class PresetDialogs : public ::testing::Test {
protected:
    PresetDialogs()
        : owner(CreateWindowExW(0, L"STATIC", L"Editor", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 400, 300, nullptr,
                                nullptr, nullptr, nullptr)) {
        effect.entries = {PresetEntry{kParamSlider, {.slider = 0.25F}}};
    }
    ~PresetDialogs() override { DestroyWindow(owner); }

    /// What `work` answers while a person does `actions`.
    static bool with(const std::function<void()>& actions, const std::function<bool()>& work) {
        std::thread person(actions);
        const bool done = work();
        person.join();
        return done;
    }
    bool load(const wchar_t* path = nullptr) { return saver.LoadPreset(owner, &effect, 2, path, &outcome); }
    bool save(const wchar_t* path = nullptr) { return saver.SavePreset(owner, &effect, 2, path, &outcome); }

    HWND owner;
    CPresetSaver saver;  // on the stack, its count stays at 1
    PresetEffectStub effect;
    PresetOutcome outcome{};
    PresetFolder folder;
};

TEST_F(PresetDialogs, AskForTheFile) {
    EXPECT_TRUE(with([&] { enter(dialogCalled(L"Save Preset"), folder / "Soft"); }, [&] { return save(); }));
    EXPECT_TRUE(std::filesystem::exists(folder / "Soft.lumvc")) << "the extension is added";
    effect.entries[0].value.slider = 0.75F;
    EXPECT_TRUE(with([&] { enter(dialogCalled(L"Load Preset"), folder / "Soft.lumvc"); }, [&] { return load(); }));
    EXPECT_STREQ(outcome.name, "Soft");
    EXPECT_EQ(outcome.entries[0].value.slider, 0.25F);
    const std::string kept = contentsOf(folder / "Soft.lumvc");
    const auto replaceButSayNo = [&] {
        const HWND dialog = dialogCalled(L"Save Preset");
        enter(dialog, folder / "Soft.lumvc");
        press(dialogCalled(L"Save Preset", dialog), IDNO);
        std::this_thread::sleep_for(std::chrono::milliseconds(200));  // the dialog comes back
        press(dialog, IDCANCEL);
    };
    EXPECT_FALSE(with(replaceButSayNo, [&] { return save(); })) << "a file that exists is not replaced unasked";
    EXPECT_EQ(outcome.status, kPresetCancelled);
    EXPECT_EQ(contentsOf(folder / "Soft.lumvc"), kept);
}

TEST_F(PresetDialogs, TakeACancelledQuestionForNoFailure) {
    for (const auto& [title, work] :
         {std::pair<const wchar_t*, std::function<bool()>>{L"Load Preset", [&] { return load(); }},
          {L"Save Preset", [&] { return save(); }}}) {
        outcome.status = kPresetDone;
        EXPECT_FALSE(with([&] { press(dialogCalled(title), IDCANCEL); }, work));
        EXPECT_EQ(outcome.status, kPresetCancelled);
    }
}

TEST_F(PresetDialogs, TellWhatWentWrong) {
    std::wstring told;
    const auto seen = [&](const wchar_t* title) {
        return [&told, title] {
            const HWND box = dialogCalled(title);
            told = messageIn(box);
            press(box, IDOK);
        };
    };
    EXPECT_FALSE(with(seen(L"Preset load error"), [&] { return load((folder / "missing").c_str()); }));
    EXPECT_EQ(told, L"Sorry, can't open the preset specified.\nPossible reason: access denied or file is corrupted.");
    EXPECT_FALSE(with(seen(L"Preset save error"), [&] { return save((folder / "no" / "such").c_str()); }));
    EXPECT_EQ(told, L"Sorry, can't save preset.\nPossible reason: access denied or disk is full.");
    effect.effectName = "Old TV";
    ASSERT_TRUE(save((folder / "tv").c_str()));
    effect.effectName = "Outline";
    EXPECT_FALSE(with(seen(L"Preset open warning"), [&] { return load((folder / "tv").c_str()); }));
    EXPECT_EQ(outcome.status, kPresetMismatched);
    EXPECT_EQ(told, L"Error trying to open a Old TV preset. This can only open Outline presets. Please try again.");
    EXPECT_FALSE(saver.LoadPreset(nullptr, &effect, 2, (folder / "tv").c_str(), &outcome)) << "nobody to tell";
}

}  // namespace
}  // namespace lumiset::test
