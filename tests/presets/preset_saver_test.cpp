// Preset files as hosts meet them: through the module's exports.

#include <gtest/gtest.h>

#include <bit>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>

#include "tests/presets/preset_effect.h"
#include "tests/support/effect_tester.h"

namespace lumiset::test {
namespace {

class PresetSaver : public ::testing::Test {
protected:
    PresetSaver() : saver(Held<IEffectLibrary>(GetEffectsLibrary())->CreatePresetSaver()) {
        effect.entries = {slider(0.25F), slider(0.1F), PresetEntry{kParamColor, {.words = {0x00FF8040, 0}}}};
    }

    static PresetEntry slider(float value) { return {kParamSlider, {.slider = value}}; }

    bool save(const std::filesystem::path& path) {
        return saver->SavePreset(nullptr, &effect, 2, wide(path).c_str(), &outcome);
    }
    bool load(const std::filesystem::path& path) {
        return saver->LoadPreset(nullptr, &effect, 2, wide(path).c_str(), &outcome);
    }
    bool loadText(const std::string& text) {
        writeFile(folder / "text.lumvc", text);
        return load(folder / "text.lumvc");
    }
    std::string savedText() {
        EXPECT_TRUE(save(folder / "saved.lumvc"));
        return contentsOf(folder / "saved.lumvc");
    }

    Held<IPresetSaver> saver;
    PresetEffectStub effect;
    PresetOutcome outcome{};
    PresetFolder folder;
};

TEST_F(PresetSaver, WritesTheDocumentThatOthersRead) {
    effect.entries = {PresetEntry{kParamGroup, {}},
                      PresetEntry{kParamPoint, {.point = {0.5F, 1e-7F}}},
                      PresetEntry{kParamChoice, {.words = {3, 0}}},
                      slider(0.1F),
                      PresetEntry{kParamColor, {.words = {0x000080FF, 0}}},
                      PresetEntry{kParamBoolean, {.words = {0xFFFFFF07, 0}}}};
    ASSERT_TRUE(save(folder / "Warm & soft's.lumvc"));
    EXPECT_EQ(contentsOf(folder / "Warm & soft's.lumvc"),
              "<?xml version=\"1.0\" standalone=\"no\" ?>\n"
              "<!-- Effect's Preset File -->\n"
              "<Preset Name=\"Warm &amp; soft&apos;s\" LibraryName=\"Vantrel Lumiset V\" EffectName=\"Outline\">\n"
              "    <parameter type=\"5\" />\n"
              "    <parameter type=\"0\" x=\"0.5\" y=\"1e-07\" />\n"
              "    <parameter type=\"1\" value=\"3\" />\n"
              "    <parameter type=\"2\" value=\"0.1\" />\n"
              "    <parameter type=\"3\" value=\"33023\" />\n"
              "    <parameter type=\"4\" value=\"1\" />\n"
              "</Preset>\n");
    ASSERT_TRUE(load(folder / "Warm & soft's.lumvc"));
    EXPECT_STREQ(outcome.name, "Warm & soft's");
    EXPECT_EQ(outcome.count, 6U);
    EXPECT_EQ(outcome.entries[5].value.words[0], 1U);
    EXPECT_EQ(folder.entries(), 1) << "the temporary file is gone";
}

TEST_F(PresetSaver, BringsEveryFloatBackToTheBit) {
    std::mt19937 random(1);
    std::vector<float> numbers = {0.0F, -0.0F, 1.0F, std::numeric_limits<float>::denorm_min(),
                                  std::nextafter(1.0F, 0.0F)};
    while (numbers.size() < 20000) {
        numbers.push_back(std::bit_cast<float>(static_cast<std::uint32_t>(random() % 0x3F800001U)));
    }
    for (std::size_t at = 0; at + 3 * 50 <= numbers.size(); at += 3 * 50) {
        effect.entries.clear();
        for (std::size_t i = at; i < at + 150; i += 3) {
            effect.entries.push_back(slider(numbers[i]));
            effect.entries.push_back({kParamPoint, {.point = {numbers[i + 1], numbers[i + 2]}}});
            if (effect.entries.size() == 64) {
                break;
            }
        }
        ASSERT_TRUE(save(folder / "numbers.lumvc"));
        outcome = {};
        ASSERT_TRUE(load(folder / "numbers.lumvc"));
        ASSERT_EQ(outcome.count, effect.entries.size());
        for (std::size_t i = 0; i < outcome.count; ++i) {
            ASSERT_EQ(outcome.entries[i].value.words[0], effect.entries[i].value.words[0]);
            ASSERT_EQ(outcome.entries[i].value.words[1], effect.entries[i].value.words[1]);
        }
    }
}

// What a host is handed is a value that its panel can show.
TEST_F(PresetSaver, LimitsNumbersAndRefusesWhatIsNone) {
    struct Case {
        const char* written;
        std::optional<float> read;
    };
    constexpr Case kCases[] = {{"1.5", 1.0F},   {"-0.5", 0.0F},        {"1e39", 1.0F},
                               {"1e-60", 0.0F}, {"nan", std::nullopt}, {"-inf", std::nullopt}};
    effect.entries = {slider(0.25F), PresetEntry{kParamPoint, {.point = {0.5F, 0.75F}}}};
    const std::string text = savedText();
    for (const Case& each : kCases) {
        for (const std::string number : {"\"0.25\"", "\"0.5\"", "\"0.75\""}) {
            std::string changed = text;
            changed.replace(changed.find(number), number.size(), '"' + std::string(each.written) + '"');
            ASSERT_EQ(loadText(changed), each.read.has_value()) << changed;
            const float read = number == "\"0.25\""  ? outcome.entries[0].value.slider
                               : number == "\"0.5\"" ? outcome.entries[1].value.point.x
                                                     : outcome.entries[1].value.point.y;
            EXPECT_TRUE(!each.read || read == *each.read) << changed;
        }
    }
    effect.entries[0] = slider(7.0F);
    EXPECT_NE(savedText().find("value=\"1\""), std::string::npos);
    EXPECT_EQ(outcome.entries[0].value.slider, 1.0F) << "what was saved is what the host is told";
    effect.entries[1].value.point.y = std::numeric_limits<float>::quiet_NaN();
    EXPECT_FALSE(save(folder / "none.lumvc"));
    EXPECT_EQ(folder.entries(), 2) << "nothing is left behind";
}

TEST_F(PresetSaver, BringsEveryPresetOfEveryEffectBack) {
    for (std::uint32_t index = 0; index < effectCount(); ++index) {
        const EffectTester tester(index);
        effect.effectName = tester.effect().GetEffectName();
        for (std::uint32_t preset = 0; preset < tester.presetCount(); ++preset) {
            ValueHost values = tester.presetHost(preset);
            effect.entries.clear();
            ParamInfo info{};
            for (std::uint32_t param = 0; tester.effect().GetParamInfo(param, &info); ++param) {
                effect.entries.push_back({info.type, values.values[param]});
            }
            ASSERT_TRUE(save(folder / "all.lumvc")) << effect.effectName;
            outcome = {};
            ASSERT_TRUE(load(folder / "all.lumvc")) << effect.effectName;
            ASSERT_EQ(outcome.count, effect.entries.size());
            for (std::size_t i = 0; i < outcome.count; ++i) {
                EXPECT_EQ(outcome.entries[i].type, effect.entries[i].type);
                EXPECT_EQ(std::memcmp(&outcome.entries[i].value, &effect.entries[i].value, sizeof(ParamValue)), 0)
                    << effect.effectName << ' ' << preset << ' ' << i;
            }
        }
    }
}

TEST_F(PresetSaver, FollowsNoLocale) {
    const std::string plain = savedText();
#ifdef LUMISET_TEST_LOCALES
    ::setenv("LOCPATH", LUMISET_TEST_LOCALES, 1);
#endif
    const char* found = nullptr;
    for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "de_DE", "fr_FR.UTF-8", "German"}) {
        found = found == nullptr ? std::setlocale(LC_ALL, name) : found;
    }
    if (found == nullptr) {
        GTEST_SKIP() << "no locale with decimal commas is installed here";
    }
    EXPECT_EQ(std::to_string(0.5), "0,500000");
    EXPECT_EQ(savedText(), plain);
    EXPECT_TRUE(load(folder / "saved.lumvc"));
    EXPECT_EQ(outcome.entries[0].value.slider, 0.25F);
    std::setlocale(LC_ALL, "C");
}

TEST_F(PresetSaver, TellsAnotherEffectsPresetFromABrokenOne) {
    const std::string text = savedText();
    const auto replaced = [&](const std::string& from, const std::string& to) {
        std::string changed = text;
        changed.replace(changed.find(from), from.size(), to);
        return changed;
    };
    const std::string first = "    <parameter type=\"2\" value=\"0.25\" />\n";
    const std::string last = "    <parameter type=\"3\" value=\"16744512\" />\n";
    struct Case {
        std::string text;
        std::uint32_t status;
    };
    const Case kCases[] = {
        {text, kPresetDone},
        {replaced(last, last + first + "<parameter type=\"77\"/>\n"), kPresetDone},
        {replaced("standalone=\"no\" ?>", " standalone='no' >"), kPresetDone},
        {replaced("Name=\"saved\" ", ""), kPresetDone},
        {replaced("\"16744512\"", "\"-16777216\""), kPresetDone},
        {replaced("\"Outline\"", "\"O&#117;tl&#x69;ne\""), kPresetDone},
        {replaced(last, ""), kPresetMismatched},
        {replaced(first, "<parameter type=\"77\"/>"), kPresetMismatched},
        {replaced("\"Outline\"", "\"outline\""), kPresetMismatched},
        {replaced("EffectName=\"Outline\"", ""), kPresetMismatched},
        {replaced("Lumiset V\"", "Lumiset IV\""), kPresetMismatched},
        {replaced("\"0.25\"", "\"0,25\""), kPresetUnreadable},
        {replaced("\"0.25\"", "\"\""), kPresetUnreadable},
        {replaced(" value=\"0.25\"", ""), kPresetUnreadable},
        {replaced(" type=\"2\"", ""), kPresetUnreadable},
        {replaced("\"16744512\"", "\"99999999999\""), kPresetUnreadable},
        {replaced("<Preset ", "<Presets "), kPresetUnreadable},
        {"<Preset LibraryName='Vantrel Lumiset V' EffectName='Outline'></Preset>", kPresetUnreadable},
    };
    for (const Case& each : kCases) {
        outcome = {};
        outcome.count = 99;
        EXPECT_EQ(loadText(each.text), each.status == kPresetDone) << each.text;
        EXPECT_EQ(outcome.status, each.status) << each.text;
        EXPECT_EQ(outcome.count, each.status == kPresetDone ? 3U : 99U) << "a failure writes the status alone";
    }
}

TEST_F(PresetSaver, RefusesEveryTruncationAndWhatIsNoFile) {
    std::string text = savedText();
    text.pop_back();  // white space at the end
    for (std::size_t size = 0; size < text.size(); ++size) {
        EXPECT_FALSE(loadText(text.substr(0, size))) << size;
    }
    EXPECT_FALSE(loadText(text + std::string(1, '\0')));
    EXPECT_TRUE(loadText(text + std::string((1U << 20U) - text.size(), ' ')));
    EXPECT_FALSE(loadText(text + std::string((1U << 20U) - text.size() + 1, ' ')));
    EXPECT_FALSE(load(folder / "missing.lumvc"));
    EXPECT_FALSE(load(folder / "."));
    EXPECT_EQ(outcome.status, kPresetUnreadable);
}

TEST_F(PresetSaver, LeavesWhatWasThereWhenItCannotSave) {
    const std::string before = savedText();
    effect.entries.assign(65, slider(0.5F));
    EXPECT_FALSE(save(folder / "saved.lumvc")) << "more parameters than a preset holds";
    EXPECT_EQ(outcome.status, kPresetNotSaved);
    effect.entries.clear();
    EXPECT_FALSE(save(folder / "saved.lumvc")) << "a file without parameters would be unreadable";
    effect.entries = {slider(0.5F)};
    effect.effectName = "Out\nline";
    EXPECT_FALSE(save(folder / "saved.lumvc")) << "a name that would not read back";
    EXPECT_EQ(contentsOf(folder / "saved.lumvc"), before);
    effect.effectName = "Outline";
    std::filesystem::create_directory(folder / "taken.lumvc");
    EXPECT_FALSE(save(folder / "taken.lumvc"));
    EXPECT_FALSE(save(folder / "no" / "such.lumvc"));
    EXPECT_EQ(folder.entries(), 2) << "nothing is left behind";
}

TEST_F(PresetSaver, AsksNobodyWithoutAnOwner) {
    EXPECT_FALSE(saver->LoadPreset(nullptr, &effect, 2, nullptr, nullptr));
    EXPECT_FALSE(saver->SavePreset(nullptr, &effect, 2, nullptr, &outcome));
    EXPECT_EQ(outcome.status, kPresetNotSaved);
    EXPECT_FALSE(saver->LoadPreset(nullptr, nullptr, 2, L"x", &outcome));
    EXPECT_EQ(outcome.status, kPresetUnreadable);
    EXPECT_FALSE(saver->SavePreset(nullptr, nullptr, 2, L"x", &outcome));
    effect.effectLibrary = nullptr;
    EXPECT_FALSE(saver->SavePreset(nullptr, &effect, 2, L"x", &outcome));
}

TEST_F(PresetSaver, NamesPresetsByTheirFilesWhateverTheirCharacters) {
    ASSERT_TRUE(save(folder / "a&#x41; <b>.v2.lumvc") || sizeof(wchar_t) == 2) << "Windows has no such names";
    if (sizeof(wchar_t) == 4) {
        ASSERT_TRUE(load(folder / "a&#x41; <b>.v2.lumvc"));
        EXPECT_STREQ(outcome.name, "a&#x41; <b>.v2");
        const std::filesystem::path wide(std::u8string(u8"Grün 緑 🎞.lumvc"));
        ASSERT_TRUE(save(folder / wide));
        ASSERT_TRUE(load(folder / wide));
        EXPECT_STREQ(outcome.name, reinterpret_cast<const char*>(u8"Grün 緑 🎞"));
        const wchar_t surrogate[] = {L'/', L't', L'm', L'p', L'/', static_cast<wchar_t>(0xD800), 0};
        EXPECT_FALSE(saver->LoadPreset(nullptr, &effect, 2, surrogate, &outcome));
        EXPECT_FALSE(saver->SavePreset(nullptr, &effect, 2, surrogate, &outcome));
    }
}

}  // namespace
}  // namespace lumiset::test
