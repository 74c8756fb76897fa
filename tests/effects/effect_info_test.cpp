// What the check of an effect's tables refuses: each table here is sound but for one thing.

#include "effects/effect_info.h"

#include <limits>

namespace lumiset {
namespace {

constexpr const char* kItems[] = {"One", "Two"};

/// A small effect of every type of parameter, for `change` to spoil.
template <std::size_t Slots = 6, class Change>
constexpr bool validAfter(Change change) {
    struct {
        const char* name = "Effect";
        std::array<ParamRow, 8> params = {groupOpen("Group", {}),
                                          sliderParam("Slider", 0.5F, {}, "Tip"),
                                          pointParam("Point", 0.0F, 1.0F, {}, "Tip"),
                                          groupClose("Group", {}),
                                          booleanParam("Boolean", true, {}, "Tip"),
                                          choiceParam("Choice", kItems, 1, {}, "Tip"),
                                          colorParam("Color", 0xFFFFFF, {}, "Tip"),
                                          sliderParam("Last", 1.0F, {}, "Tip")};
        std::array<const char*, 2> presets = {"First", "Second"};
        std::array<ParamValue, 2 * Slots> values{};
        const char* shared = "";
    } effect;
    for (std::size_t i = 0; i < 2; ++i) {
        auto* slot = &effect.values[i * Slots];
        for (const ParamRow& row : effect.params) {
            if (row.type != kParamGroup || Slots == effect.params.size()) {
                *slot++ = row.defaultValue;
            }
        }
    }
    change(effect);
    return valid({.name = effect.name,
                  .flags = kFlagsEveryEffect,
                  .params = effect.params,
                  .presets = {effect.presets, effect.values, Slots},
                  .sharedPresetName = effect.shared});
}

constexpr auto kNan = std::numeric_limits<float>::quiet_NaN();
constexpr const char* kForty = "A label of just forty characters: refuse";

static_assert(validAfter([](auto&) {}));
static_assert(validAfter<8>([](auto&) {}), "a value for each row");
static_assert(!validAfter([](auto& effect) { effect.name = ""; }));

static_assert(!validAfter([](auto& effect) { effect.params[1].label = ""; }));
static_assert(!validAfter([](auto& effect) { effect.params[1].label = kForty; }));
static_assert(!validAfter([](auto& effect) { effect.params[6].toolTip = ""; }));
static_assert(!validAfter([](auto& effect) { effect.params[0].closesGroup = true; }));
static_assert(!validAfter([](auto& effect) { effect.params[3].closesGroup = false; }));
static_assert(!validAfter([](auto& effect) { effect.params[1].maximum = 0.0F; }));
static_assert(!validAfter([](auto& effect) { effect.params[1].defaultValue.slider = 1.01F; }));
static_assert(!validAfter([](auto& effect) { effect.params[1].defaultValue.slider = kNan; }));
static_assert(!validAfter([](auto& effect) { effect.params[2].defaultValue.point.y = -0.1F; }));
static_assert(!validAfter([](auto& effect) { effect.params[4].defaultValue.words[0] = 2; }));
static_assert(!validAfter([](auto& effect) { effect.params[5].defaultValue.words[0] = 2; }));
static_assert(!validAfter([](auto& effect) { effect.params[5].items = {}; }));

static_assert(!validAfter([](auto& effect) { effect.presets[1] = ""; }));
static_assert(!validAfter([](auto& effect) { effect.presets[1] = "First"; }));
static_assert(validAfter([](auto& effect) { effect.presets[1] = effect.shared = "First"; }));
static_assert(!validAfter([](auto& effect) { effect.values[6].slider = -0.01F; }), "of the second preset");
static_assert(!validAfter([](auto& effect) { effect.values[1].point.x = 1.01F; }));
static_assert(!validAfter([](auto& effect) { effect.values[3].words[0] = 2; }));
static_assert(!validAfter<8>([](auto& effect) { effect.values[5].words[0] = 2; }));
static_assert(!validAfter<8>([](auto& effect) { effect.values[15].slider = 2.0F; }));
static_assert(!validAfter<7>([](auto&) {}), "neither a value for each parameter nor one for each row");

}  // namespace
}  // namespace lumiset
