#include "hostkit/look.h"

#include <array>
#include <charconv>

#include "bindings/c/guard.h"
#include "bindings/c/handles.h"
#include "hostkit/look_files.h"
#include "hostkit/look_json.h"
#include "hostkit/preset_file.h"

namespace lumiset::bindings {
namespace {

const SharedLibrary& sharedOf(const lumiset_library* library) {
    return needed(library, "a library").shared;
}

/// An effect of a look with what is known of it.
struct Place {
    Place(lumiset_look* look, std::uint32_t number) : opened(*needed(look, "a look").shared) {
        std::vector<hostkit::LookEffect>& effects = look->masked.look.effects;
        if (number >= effects.size()) {
            throw ArgumentError("The look has no effect number " + std::to_string(number) + " of " +
                                std::to_string(effects.size()) + '.');
        }
        effect = &effects[number];
        description = &opened.catalogue.effect(effect->effect);
    }
    const Library& opened;
    hostkit::LookEffect* effect;
    const hostkit::EffectDescription* description;
};

/// The number as text, whatever the locale, by as few digits as tell it.
std::string textOf(double number) {
    std::array<char, 32> buffer{};
    return {buffer.data(), std::to_chars(buffer.data(), buffer.data() + buffer.size(), number).ptr};
}

double percentOf(double percent) {
    if (!(percent >= 0.0 && percent <= 100.0)) {
        throw ArgumentError("A strength is a number from 0 to 100.");
    }
    return percent;
}

}  // namespace
}  // namespace lumiset::bindings

using namespace lumiset;
using namespace lumiset::bindings;

lumiset_look* lumiset_look_new(const lumiset_library* library) {
    return guardedPointer([&] { return new lumiset_look{sharedOf(library), {{"Look"}}}; });
}

lumiset_look* lumiset_look_open(const lumiset_library* library, const char* name_or_file) {
    return guardedPointer([&] {
        const SharedLibrary& shared = sharedOf(library);
        hostkit::KnownLook found = hostkit::findLook(shared->catalogue, neededText(name_or_file, "a look's name"));
        return new lumiset_look{shared, {std::move(found.look)}};
    });
}

lumiset_look* lumiset_look_parse(const lumiset_library* library, const char* json) {
    return guardedPointer([&] {
        const SharedLibrary& shared = sharedOf(library);
        return new lumiset_look{shared, {hostkit::lookFromJson(shared->catalogue, neededText(json, "a text"), "Look")}};
    });
}

void lumiset_look_free(lumiset_look* look) {
    delete look;
}

lumiset_status lumiset_look_save(const lumiset_look* look, const char* file) {
    return guarded([&] {
        hostkit::saveLook(needed(look, "a look").shared->catalogue, look->masked.look, neededText(file, "a file"));
    });
}

const char* lumiset_look_text(lumiset_look* look) {
    return guardedPointer([&] {
        lumiset_look& known = needed(look, "a look");
        known.text = hostkit::lookToJson(known.shared->catalogue, known.masked.look);
        return known.text.c_str();
    });
}

lumiset_status lumiset_look_add(lumiset_look* look, const char* effect, const char* preset) {
    return guarded([&] {
        const auto& description =
            needed(look, "a look").shared->catalogue.effect(neededText(effect, "an effect's name"));
        hostkit::LookEffect added{description.name};
        if (preset != nullptr) {
            added.preset = description.preset(preset).uniqueName;
        }
        look->masked.look.effects.push_back(std::move(added));
    });
}

uint32_t lumiset_look_effects(const lumiset_look* look) {
    return look != nullptr ? static_cast<uint32_t>(look->masked.look.effects.size()) : 0;
}

lumiset_status lumiset_look_set(lumiset_look* look, uint32_t effect, const char* name, const char* value) {
    return guarded([&] {
        const Place place(look, effect);
        place.effect->set(*place.description, neededText(name, "a parameter's name"), neededText(value, "a value"));
    });
}

lumiset_status lumiset_look_set_number(lumiset_look* look, uint32_t effect, const char* name, double value) {
    return guarded([&] {
        const Place place(look, effect);
        place.effect->set(*place.description, neededText(name, "a parameter's name"), textOf(value));
    });
}

lumiset_status lumiset_look_key(lumiset_look* look, uint32_t effect, const char* name, const char* time,
                                const char* value) {
    return guarded([&] {
        const Place place(look, effect);
        hostkit::LookTime when;
        if (!hostkit::parseLookTime(neededText(time, "a time"), when)) {
            throw ArgumentError(
                '"' + std::string(time) +
                "\" is no time: say it in seconds, as h:m:s, or as a part of the clip, such as \"50%\".");
        }
        place.effect->addKey(*place.description, neededText(name, "a parameter's name"), when,
                             neededText(value, "a value"));
    });
}

lumiset_status lumiset_look_load_preset(lumiset_look* look, uint32_t effect, const char* file) {
    return guarded([&] {
        const Place place(look, effect);
        hostkit::loadPresetFile(place.opened.module.effectLibrary(), *place.description, neededText(file, "a file"),
                                *place.effect);
    });
}

lumiset_status lumiset_look_effect_strength(lumiset_look* look, uint32_t effect, double percent) {
    return guarded([&] { Place(look, effect).effect->strength = percentOf(percent); });
}

lumiset_status lumiset_look_effect_off(lumiset_look* look, uint32_t effect, int off) {
    return guarded([&] { Place(look, effect).effect->off = off != 0; });
}

lumiset_status lumiset_look_strength(lumiset_look* look, double percent) {
    return guarded([&] { needed(look, "a look").masked.look.strength = percentOf(percent); });
}

lumiset_status lumiset_look_mask(lumiset_look* look, const float* values, int32_t width, int32_t height) {
    return guarded([&] {
        needed(look, "a look");
        if (values == nullptr) {
            look->masked.mask = nullptr;
            return;
        }
        if (width < 1 || height < 1) {
            throw ArgumentError("A mask has a width and a height from 1 on.");
        }
        const std::size_t count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
        look->masked.mask =
            std::make_shared<hostkit::Mask>(hostkit::Mask{width, height, std::vector<float>(values, values + count)});
    });
}
