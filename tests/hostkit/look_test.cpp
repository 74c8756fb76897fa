#include "hostkit/look.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>

#include "hostkit/look_files.h"
#include "hostkit/look_json.h"
#include "hostkit/module.h"
#include "hostkit/parameter_text.h"

namespace lumiset::hostkit {
namespace {

using testing::HasSubstr;

const EffectCatalogue& catalogue() {
    static const Module module;
    static const EffectCatalogue known(module.effectLibrary());
    return known;
}

std::string look(const std::string& rest) {
    return R"({"lumilook": 1, "name": "Mine", "effects": [{"effect": "Outline")" + rest + "}]}";
}

std::string refusal(const std::string& text) {
    try {
        static_cast<void>(lookFromJson(catalogue(), text, "file"));
    } catch (const LookError& error) {
        return error.what();
    }
    return "taken";
}

bool sameBits(const ParamValue& a, const ParamValue& b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

TEST(Look, ReadsBackToTheSameBits) {
    std::minstd_rand random(7);
    std::uniform_real_distribution<float> fraction(0.0F, 1.0F);
    Look written{"Mine", "All of it.", "Me", 37.25};
    for (const EffectDescription& effect : catalogue().effects()) {
        LookEffect& each = written.effects.emplace_back(LookEffect{effect.name});
        each.preset = effect.presets.back().uniqueName;
        each.strength = 100.0 / 3.0;
        for (const ParameterDescription& parameter : effect.parameters) {
            LookParameter& set = each.of(parameter);
            set.value = {};
            if (parameter.type == kParamSlider) {
                set.keys.push_back({{10.0 / 3.0, true}, {}});
                set.keys.push_back({{7.1, false}, {}});
                set.keys.back().value.slider = fraction(random);
            } else if (parameter.type == kParamPoint) {
                set.value.point = {fraction(random), fraction(random)};
            } else if (parameter.type == kParamChoice) {
                set.value.choice = static_cast<std::uint32_t>(parameter.items.size() - 1);
            } else if (parameter.type == kParamColor) {
                set.value.color = 0x123456;
            }
        }
    }
    written.effects[1].off = true;
    written.clip = "/clips/a wedding.mp4";
    const std::string text = lookToJson(catalogue(), written);
    const Look read = lookFromJson(catalogue(), text, "other");
    EXPECT_EQ(read.clip, written.clip);
    EXPECT_TRUE(read.effects[1].off);
    EXPECT_EQ(lookToJson(catalogue(), read), text);
    EXPECT_EQ(read.strength, written.strength);
    ASSERT_EQ(read.effects.size(), written.effects.size());
    for (std::size_t i = 0; i < read.effects.size(); ++i) {
        const EffectDescription& effect = catalogue().effects()[i];
        EXPECT_EQ(read.effects[i].strength, written.effects[i].strength);
        const ParameterStore expected = valuesOf(effect, written.effects[i], 9.0);
        const ParameterStore found = valuesOf(effect, read.effects[i], 9.0);
        for (const ParameterDescription& parameter : effect.parameters) {
            for (const double seconds : {0.0, 0.31, 4.0, 8.0}) {
                EXPECT_TRUE(sameBits(found.valueAt(parameter, seconds), expected.valueAt(parameter, seconds)))
                    << effect.name << ": " << parameter.path() << " at " << seconds;
            }
        }
    }
}

TEST(Look, SetsKeysInPartsOfTheClipAndValuesOverThePreset) {
    const Look read = lookFromJson(catalogue(), look(R"(, "preset": "Red Glow", "values": {"Color": "#0000FF"},
        "keys": {"Width": [{"at": 1, "value": 0}, {"at": "75%", "value": 40}]})"),
                                   "");
    const EffectDescription& outline = catalogue().effect("Outline");
    EXPECT_TRUE(hasKeysInParts(read));
    const ParameterStore values = valuesOf(outline, read.effects[0], 20.0);
    const ParameterDescription& width = outline.parameter("Width");
    EXPECT_EQ(formatValue(width, values.valueAt(width, 8.0)), "20");  // halfway from 1 s to 15 s
    const ParameterDescription& color = outline.parameter("Color");
    EXPECT_EQ(formatValue(color, values.valueAt(color, 0.0)), "#0000FF");
    ParameterStore preset(outline);
    preset.apply(outline.preset("Red Glow"));
    const ParameterDescription& opacity = outline.parameter("Opacity");
    EXPECT_TRUE(sameBits(values.valueAt(opacity, 0.0), preset.valueAt(opacity, 0.0)));
}

TEST(Look, SaysWhatIsWrongWithAFile) {
    std::string many = R"({"lumilook": 1, "effects": [{"effect": "Outline"})";
    for (int i = 0; i < 100; ++i) {
        many += R"(, {"effect": "Outline"})";
    }
    const std::string nested(20, '[');
    const struct {
        std::string text;
        const char* refusal;
    } files[] = {
        {"", "not JSON"},
        {look(", \"values\": {\"Width\": 1}}"), "not JSON"},
        {"{\"lumilook\": 1, \"name\": \"\xC3\x28\", \"effects\": []}", "not JSON"},
        {nested, "nested deeper than a look"},
        {"[]", "A look is a JSON object"},
        {R"({"effects": [{"effect": "Outline"}]})", "version"},
        {R"({"lumilook": 2, "colour": 1})", "newer"},
        {R"({"lumilook": 1, "colour": 1})", "not \"colour\""},
        {R"({"lumilook": 1, "effects": []})", "1 to 100"},
        {many + "]}", "1 to 100"},
        {R"({"lumilook": 1, "effects": [{"effect": "Outlin"}]})", "Outline"},
        {R"({"lumilook": 1, "name": "two\nlines", "effects": [{"effect": "Outline"}]})", "one line"},
        {R"({"lumilook": 1, "strength": 101, "effects": [{"effect": "Outline"}]})", "0 to 100"},
        {look(R"(, "preset": "No Glow")"), "no preset \"No Glow\""},
        {look(R"(, "values": {"Width": 1, "Width": 2})"), "stands there twice"},
        {look(R"(, "values": {"Width": 1, "#0": 2, "#1": 2, "#2": 2})"), "set twice"},
        {look(R"(, "values": {"Girth": 1})"), "no parameter \"Girth\""},
        {look(R"(, "values": {"Width": 1e9})"), "Width takes"},
        {look(R"(, "values": {"Width": 1e999})"), "too large"},
        {look(R"(, "values": {"Width": "wide"})"), "Width takes"},
        {look(R"(, "keys": {"Width": []})"), "are a list"},
        {look(R"(, "keys": {"Width": [{"at": -1, "value": 1}]})"), "\"at\" is"},
        {look(R"(, "keys": {"Width": [{"at": "101%", "value": 1}]})"), "\"at\" is"},
        {look(R"(, "keys": {"Width": [{"at": "2", "value": 1}]})"), "\"at\" is"},
        {look(R"(, "keys": {"Width": [{"at": 1}]})"), "\"at\" and \"value\""},
        {look(R"(, "values": {"Width": 1}, "keys": {"Width": [{"at": 1, "value": 1}]})"), "set twice"},
    };
    for (const auto& file : files) {
        EXPECT_THAT(refusal(file.text), HasSubstr(file.refusal)) << file.text.substr(0, 200);
    }
    EXPECT_EQ(refusal(look("")), "taken");
}

TEST(Look, OursCanAllBeUsedAndOnesOwnComeFirst) {
    const std::filesystem::path data = std::filesystem::path(testing::TempDir()) / "looks_data";
    std::filesystem::create_directories(data / "lumiset/looks");
    ::setenv("XDG_DATA_HOME", data.c_str(), 1);
    std::vector<std::string> faults;
    const std::vector<KnownLook> ours = knownLooks(catalogue(), faults);
    ASSERT_FALSE(ours.empty());
    for (const KnownLook& each : ours) {
        EXPECT_FALSE(each.look.name.empty() || each.look.about.empty() || each.look.author.empty());
        EXPECT_NO_THROW(static_cast<void>(buildChain(Module().effectLibrary(), catalogue(), {{each.look}}, 4.0)));
    }
    Look own{ours.front().look.name, "", "Me"};
    own.effects = {{"Outline"}};
    const std::filesystem::path file = data / "lumiset/looks/own.lumilook";
    saveLook(catalogue(), own, file);
    std::ofstream(data / "lumiset/looks/broken.lumilook") << "{";
    EXPECT_EQ(knownLooks(catalogue(), faults).size(), ours.size() + 1);
    EXPECT_THAT(faults, testing::ElementsAre(HasSubstr("broken.lumilook")));
    EXPECT_EQ(findLook(catalogue(), own.name).look.author, "Me");
    EXPECT_EQ(findLook(catalogue(), file.string()).look.author, "Me");
    EXPECT_THROW(static_cast<void>(findLook(catalogue(), "nothing at all")), LookError);

    // What cannot be written leaves the old file and nothing else.
    own.name = "two\nlines";
    EXPECT_THROW(saveLook(catalogue(), own, file), LookError);
    own.name = "one line";
    EXPECT_THROW(saveLook(catalogue(), own, data / "lumiset/nowhere/own.lumilook"), LookError);
    std::filesystem::create_directory(data / "folder.lumilook");
    EXPECT_THROW(saveLook(catalogue(), own, data / "folder.lumilook"), LookError);
    EXPECT_EQ(loadLook(catalogue(), file).author, "Me");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(file.parent_path()), {}), 2);
    std::filesystem::remove_all(data);
}

}  // namespace
}  // namespace lumiset::hostkit
