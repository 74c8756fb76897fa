#include <new>

#include "bindings/c/guard.h"
#include "bindings/c/handles.h"
#include "hostkit/look_files.h"
#include "hostkit/parameter_text.h"

namespace lumiset::bindings {

Library::Library(const std::filesystem::path& file) : module(file) {
    for (const hostkit::EffectDescription& effect : catalogue.effects()) {
        std::vector<ParameterTexts>& each = texts.emplace_back();
        for (const hostkit::ParameterDescription& parameter : effect.parameters) {
            each.push_back({effect.shortestName(parameter), formatValue(parameter, parameter.defaultValue),
                            describeRange(parameter)});
        }
    }
    std::vector<std::string> faults;  // of files, which opening one of them tells
    for (const hostkit::KnownLook& known : hostkit::knownLooks(catalogue, faults)) {
        looks.push_back(known.look.name);
    }
}

namespace {

const Library& libraryOf(const lumiset_library* library) {
    return *needed(library, "a library").shared;
}

template <class Things>
const auto& numbered(const Things& things, std::uint32_t number, const char* what) {
    if (number >= things.size()) {
        throw ArgumentError("There is no " + std::string(what) + " number " + std::to_string(number) + " of " +
                            std::to_string(things.size()) + '.');
    }
    return things[number];
}

const hostkit::EffectDescription& effectOf(const Library& library, std::uint32_t number) {
    return numbered(library.catalogue.effects(), number, "effect");
}

/// Asking for a name beyond the last is how a caller finds the end, so it is no error.
template <class Things>
const auto* orNull(const Things& things, std::uint32_t number) {
    return number < things.size() ? &things[number] : nullptr;
}

}  // namespace
}  // namespace lumiset::bindings

using namespace lumiset;
using namespace lumiset::bindings;

uint32_t lumiset_api_version(void) {
    return LUMISET_API_VERSION;
}

const char* lumiset_version(void) {
    return LUMISET_VERSION;
}

lumiset_library* lumiset_library_open(const char* path) {
    return guardedPointer(
        [&] { return new lumiset_library{std::make_shared<const Library>(path != nullptr ? path : "")}; });
}

void lumiset_library_free(lumiset_library* library) {
    delete library;
}

const char* lumiset_library_path(const lumiset_library* library) {
    return guardedPointer([&] { return libraryOf(library).path.c_str(); });
}

uint32_t lumiset_effect_count(const lumiset_library* library) {
    return library != nullptr ? static_cast<uint32_t>(library->shared->catalogue.effects().size()) : 0;
}

lumiset_status lumiset_find_effect(const lumiset_library* library, const char* name, uint32_t* effect) {
    return guarded([&] {
        const auto& effects = libraryOf(library).catalogue.effects();
        const auto& found = libraryOf(library).catalogue.effect(neededText(name, "an effect's name"));
        needed(effect, "a place for the effect's number") = static_cast<uint32_t>(&found - effects.data());
    });
}

lumiset_status lumiset_describe_effect(const lumiset_library* library, uint32_t effect, lumiset_effect* description) {
    return guarded([&] {
        const hostkit::EffectDescription& known = effectOf(libraryOf(library), effect);
        lumiset_effect& told = neededStruct(description, "a lumiset_effect");
        told.name = known.name.c_str();
        told.parameters = static_cast<uint32_t>(known.parameters.size());
        told.presets = static_cast<uint32_t>(known.presets.size());
        told.moves = known.dependsOnTime() ? 1 : 0;
    });
}

lumiset_status lumiset_describe_parameter(const lumiset_library* library, uint32_t effect, uint32_t parameter,
                                          lumiset_parameter* description) {
    return guarded([&] {
        const auto& known = numbered(effectOf(libraryOf(library), effect).parameters, parameter, "parameter");
        const Library::ParameterTexts& texts = libraryOf(library).texts[effect][parameter];
        lumiset_parameter& told = neededStruct(description, "a lumiset_parameter");
        told.name = texts.name.c_str();
        told.label = known.label.c_str();
        told.group = known.group.c_str();
        told.tip = known.tip.c_str();
        told.type = known.type;
        told.minimum = static_cast<double>(known.minimum);
        told.maximum = static_cast<double>(known.maximum);
        told.whole_numbers = known.wholeNumbers ? 1 : 0;
        told.items = static_cast<uint32_t>(known.items.size());
        told.default_value = texts.defaultValue.c_str();
        told.range = texts.range.c_str();
    });
}

const char* lumiset_preset_name(const lumiset_library* library, uint32_t effect, uint32_t preset) {
    return guardedPointer([&]() -> const char* {
        const auto* found = orNull(effectOf(libraryOf(library), effect).presets, preset);
        return found != nullptr ? found->uniqueName.c_str() : nullptr;
    });
}

const char* lumiset_item_name(const lumiset_library* library, uint32_t effect, uint32_t parameter, uint32_t item) {
    return guardedPointer([&]() -> const char* {
        const auto& known = numbered(effectOf(libraryOf(library), effect).parameters, parameter, "parameter");
        const auto* found = orNull(known.items, item);
        return found != nullptr ? found->c_str() : nullptr;
    });
}

const char* lumiset_look_name(const lumiset_library* library, uint32_t look) {
    return guardedPointer([&]() -> const char* {
        const auto* found = orNull(libraryOf(library).looks, look);
        return found != nullptr ? found->c_str() : nullptr;
    });
}
