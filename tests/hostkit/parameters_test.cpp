#include <gtest/gtest.h>

#include "hostkit/names.h"
#include "hostkit/parameter_store.h"
#include "hostkit/parameter_text.h"
#include "tests/hostkit/fake_effect.h"

namespace lumiset::hostkit {
namespace {

EffectDescription fake(bool slotsAreIndices = false) {
    test::FakeEffect effect;
    effect.slotsAreIndices = slotsAreIndices;
    EffectDescription description = describeEffect(effect, 7);
    EXPECT_EQ(effect.references, 1U) << "describing an effect kept a reference";
    return description;
}

/// The sentence that `act` fails with; empty when it does not fail.
template <class Act>
std::string complaintOf(Act act) {
    try {
        act();
    } catch (const ParameterError& error) {
        return error.what();
    }
    return {};
}

TEST(EffectDescription, FollowsGroupMarkersWhateverTheClosingLabelSays) {
    const EffectDescription effect = fake();
    EXPECT_EQ(effect.indexCount, 12U);
    ASSERT_EQ(effect.parameters.size(), 8U);
    std::vector<std::string> paths;
    for (const ParameterDescription& parameter : effect.parameters) {
        paths.push_back('#' + std::to_string(parameter.index) + ' ' + parameter.path());
    }
    EXPECT_EQ(paths, (std::vector<std::string>{"#1 Image/Tint", "#2 Image/Tint", "#3 Image/B/W", "#5 Hour", "#6 Mode",
                                               "#7 Center", "#9 Overlay/Size", "#11 Size"}));
    EXPECT_EQ(effect.parameterAt(5)->tip, "Sets the hour");
    EXPECT_EQ(effect.parameterAt(6)->items, (std::vector<std::string>{"Normal", "Screen", "Color Dodge"}));
}

TEST(EffectDescription, MapsPresetSlotsOfBothNumberings) {
    for (const bool slotsAreIndices : {false, true}) {
        const EffectDescription effect = fake(slotsAreIndices);
        const PresetDescription& preset = effect.preset("last LIGHT");
        ASSERT_EQ(preset.values.size(), effect.parameters.size());
        for (std::size_t i = 0; i < preset.values.size(); ++i) {
            ASSERT_TRUE(preset.values[i]);
            EXPECT_EQ(preset.values[i]->words[0], 100 + effect.parameters[i].index) << slotsAreIndices;
        }
    }
}

TEST(EffectDescription, TellsPresetsWithOneNameApart) {
    const EffectDescription effect = fake();
    EXPECT_EQ(effect.presets[2].name, "Last Light");
    EXPECT_EQ(effect.preset("last light 2").index, 2U);
    EXPECT_EQ(effect.preset("Last Light").index, 1U);
}

TEST(EffectDescription, FindsParametersByLabelGroupAndNumber) {
    const EffectDescription effect = fake();
    const std::pair<const char*, std::uint32_t> kNames[] = {
        {"hour", 5}, {" Mode ", 6}, {"B/W", 3}, {"image/b/w", 3}, {"Overlay/Size", 9}, {"#2", 2}, {"#11", 11}};
    for (const auto& [name, index] : kNames) {
        EXPECT_EQ(effect.parameter(name).index, index) << name;
    }
    for (const ParameterDescription& parameter : effect.parameters) {
        EXPECT_EQ(&effect.parameter(effect.shortestName(parameter)), &parameter) << "its shortest name finds it";
    }
}

TEST(EffectDescription, TellsHowToSayAnAmbiguousOrUnknownName) {
    const EffectDescription effect = fake();
    const auto complaint = [&](const char* name) { return complaintOf([&] { (void)effect.parameter(name); }); };
    EXPECT_EQ(complaint("tint"),
              "Fake has more than one \"tint\": say \"#1\" (a colour as #RRGGBB) or \"#2\" (-100 to 100).");
    EXPECT_EQ(complaint("Size"),
              "Fake has more than one \"Size\": say \"Overlay/Size\" (0 to 10) or \"#11\" (0 to 100).");
    EXPECT_EQ(complaint("Huor"), "Fake has no parameter \"Huor\". Did you mean \"Hour\"?");
    EXPECT_EQ(complaint("#4"), "Fake has no parameter #4.") << "a group marker has no value";
    EXPECT_NE(complaint("#99999999999"), "");
    EXPECT_NE(complaint("Sharpness").find("It has \"#1\""), std::string::npos) << complaint("Sharpness");
    EXPECT_EQ(complaintOf([&] { (void)effect.preset("fist light"); }),
              "Fake has no preset \"fist light\". Did you mean \"First Light\", \"Last Light\" or \"Last Light 2\"?");
}

TEST(NearestNames, AreNearOrHoldThePart) {
    const std::vector<std::string> names{"Old TV", "Outline", "Selective Focus", "Selective Tint", "Viewfinder"};
    const auto nearest = [&](const char* name) { return nearestNames(name, names); };
    using Names = std::vector<std::string>;
    EXPECT_EQ(nearest("outlien"), Names{"Outline"});
    EXPECT_EQ(nearest("selective"), (Names{"Selective Focus", "Selective Tint"}));
    EXPECT_EQ(nearest("Slective Tnt"), Names{"Selective Tint"});
    EXPECT_EQ(nearest("Sepia"), Names{});
    EXPECT_EQ(nearest(""), Names{});
}

TEST(ParameterText, ReadsAndShowsValuesAsThePanelDoes) {
    const EffectDescription effect = fake();
    struct Case {
        std::uint32_t index;
        const char* text;
        const char* shown;
    };
    const Case kCases[] = {{2, "-100", "-100"},
                           {2, "+20 %", "20"},
                           {2, "1e1", "10"},
                           {2, " 33.333% ", "33.33"},
                           {5, "23", "23"},
                           {5, "23.49", "23"},
                           {9, "2.5", "2.5"},
                           {11, "30", "30"},
                           {1, "#FF8000", "#FF8000"},
                           {1, "0a0B0c", "#0A0B0C"},
                           {3, "YES", "on"},
                           {3, "0", "off"},
                           {6, "color dodge", "Color Dodge"},
                           {6, "1", "Screen"},
                           {7, "25,75", "25,75"},
                           {7, "12.5%, 0%", "12.5,0"}};
    for (const Case& each : kCases) {
        const ParameterDescription& parameter = *effect.parameterAt(each.index);
        EXPECT_EQ(formatValue(parameter, parseValue(parameter, each.text)), each.shown) << each.text;
    }
    EXPECT_EQ(parseValue(*effect.parameterAt(11), "30").slider, 0.3F);
    EXPECT_EQ(parseValue(*effect.parameterAt(2), "-50").slider, 0.25F);
    EXPECT_EQ(parseValue(*effect.parameterAt(1), "#FF8001").color, 0x000180FFU) << "red in the low byte";
    EXPECT_EQ(parseValue(*effect.parameterAt(7), "25,75").point.y, 0.75F);
}

TEST(ParameterText, NamesTheRangeForWhatDoesNotFit) {
    const EffectDescription effect = fake();
    const auto complaint = [&](std::uint32_t index, const char* text) {
        return complaintOf([&] { (void)parseValue(*effect.parameterAt(index), text); });
    };
    EXPECT_EQ(complaint(2, "130"), "Tint takes -100 to 100, not \"130\".");
    EXPECT_EQ(complaint(5, "24"), "Hour takes 0 to 23, not \"24\".");
    EXPECT_EQ(complaint(1, "red"), "Tint takes a colour as #RRGGBB, not \"red\".");
    EXPECT_EQ(complaint(3, "perhaps"), "B/W takes on or off, not \"perhaps\".");
    EXPECT_EQ(complaint(6, "3"), "Mode takes \"Normal\", \"Screen\" or \"Color Dodge\", not \"3\".");
    EXPECT_EQ(complaint(7, "50"), "Center takes x,y in percent, 0 to 100 each, not \"50\".");
    for (const char* text : {"", "%", "nan", "inf", "1,5", "0x10", "--5", "+-5", "12a"}) {
        EXPECT_NE(complaint(2, text), "") << text;
    }
    for (const char* text : {"#FFF", "#FF80000", "#GG0000", "#-10000", ""}) {
        EXPECT_NE(complaint(1, text), "") << text;
    }
    for (const char* text : {"101,0", "0,-1", ",", "1,2,3"}) {
        EXPECT_NE(complaint(7, text), "") << text;
    }
}

TEST(ParameterText, ReadsTimesAsPeopleWriteThem) {
    struct Case {
        const char* text;
        double seconds;  // below 0: no time
    };
    constexpr Case kCases[] = {{"90", 90.0},      {" 1.5s ", 1.5}, {"1:30", 90.0}, {"1:00:00.5s", 3600.5},
                               {"1e12", 1e9},     {"s", -1.0},     {"-1", -1.0},   {"1:-2", -1.0},
                               {"1:2:3:4", -1.0}, {"1:", -1.0},    {"", -1.0},     {"1 s 2", -1.0}};
    for (const Case& each : kCases) {
        double seconds = -1.0;
        EXPECT_EQ(parseTime(each.text, seconds), each.seconds >= 0.0) << each.text;
        EXPECT_EQ(seconds, each.seconds) << each.text;
    }
}

TEST(ParameterStore, RunsInStraightLinesBetweenKeysAndHoldsOutside) {
    const EffectDescription effect = fake();
    ParameterStore store(effect);
    // Given out of order, one time twice.
    store.addKey("#11", 4.0, "100");
    store.addKey("#11", 2.0, "70");
    store.addKey("#11", 2.0, "20");
    store.addKey("#1", 0.0, "#000000");
    store.addKey("#1", 1.0, "#FF0A01");
    store.addKey("Center", 0.0, "0,100");
    store.addKey("Center", 1.0, "100,50");
    store.addKey("Mode", 1.0, "Screen");
    store.addKey("Mode", 2.0, "Color Dodge");
    const auto at = [&](std::uint32_t index, double time) { return store.valueAt(*effect.parameterAt(index), time); };
    EXPECT_FLOAT_EQ(at(11, 0.0).slider, 0.2F);
    EXPECT_FLOAT_EQ(at(11, 2.0).slider, 0.2F);
    EXPECT_FLOAT_EQ(at(11, 3.0).slider, 0.6F);
    EXPECT_FLOAT_EQ(at(11, 9.0).slider, 1.0F);
    EXPECT_EQ(at(1, 0.5).color, 0x010580U);
    EXPECT_FLOAT_EQ(at(7, 0.25).point.x, 0.25F);
    EXPECT_FLOAT_EQ(at(7, 0.25).point.y, 0.875F);
    EXPECT_EQ(at(6, 1.99).choice, 1U);
    EXPECT_EQ(at(6, 2.0).choice, 2U);
    EXPECT_NE(complaintOf([&] { store.addKey("Hour", -1.0, "3"); }), "");
    store.set("#11", "5");
    EXPECT_FLOAT_EQ(at(11, 3.0).slider, 0.05F) << "setting a value ends the keyframes";
}

TEST(RenderHost, AnswersWithTheValuesOfItsMoment) {
    const EffectDescription effect = fake();
    ParameterStore store(effect);
    store.addKey("#11", 0.0, "0");
    store.addKey("#11", 10.0, "100");
    RenderHost host(store, 5.0);
    ParamValue value{};
    host.GetParamValue(11, &value, kParamSlider);
    EXPECT_FLOAT_EQ(value.slider, 0.5F);
    host.GetParamValue(1, &value, kParamColor);
    EXPECT_EQ(value.color, 0x80FF00U) << "the default";
    // Nothing is written where the kind does not fit or there is no value.
    value.words[0] = 42;
    host.GetParamValue(11, &value, kParamColor);
    host.GetParamValue(0, &value, kParamGroup);
    host.GetParamValue(500, &value, kParamSlider);
    EXPECT_EQ(value.words[0], 42U);
}

}  // namespace
}  // namespace lumiset::hostkit
