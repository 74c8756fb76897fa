#include <fmt/format.h>

#include <cstdio>
#include <exception>
#include <new>
#include <type_traits>

#include "apps/lumiset/chain.h"
#include "apps/lumiset/command_line.h"
#include "apps/lumiset/gpu_commands.h"
#include "apps/lumiset/option_commands.h"
#include "apps/lumiset/preset_commands.h"
#include "apps/lumiset/render.h"
#include "apps/lumiset/show.h"
#include "hostkit/module.h"

namespace lumiset::app {
namespace {

constexpr int kDone = 0;
constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;

int complain(int status, const char* sentence, const char* hint = "") {
    fmt::print(stderr, "lumiset: {}{}\n", sentence, hint);
    return status;
}

void printText(const std::string& text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0) {
        throw std::runtime_error("The output cannot be written.");
    }
}

/// True when all of the files are presets.
bool checkPresets(IEffectLibrary& library, const hostkit::EffectCatalogue& catalogue,
                  const PresetCheckRequest& request) {
    bool sound = true;
    printText(checkPresetsText(library, catalogue, request.files, sound));
    return sound;
}

/// The exit status.
int carryOut(const CommandLine& line) {
    if (const auto* text = std::get_if<TextRequest>(&line.request)) {
        printText(text->text);
        return kDone;
    }
    if (std::holds_alternative<GPUInfoRequest>(line.request)) {
        printText(gpuInfoText());
        return kDone;
    }
    const hostkit::Module module(line.modulePath);
    const hostkit::EffectCatalogue catalogue(module.effectLibrary());
    if (const auto* list = std::get_if<ListRequest>(&line.request)) {
        printText(list->json ? listJson(catalogue) : listText(catalogue));
    } else if (const auto* show = std::get_if<ShowRequest>(&line.request)) {
        const hostkit::EffectDescription& effect = catalogue.effect(show->effect);
        printText(show->json ? showJson(effect) : showText(effect));
    } else if (const auto* save = std::get_if<PresetSaveRequest>(&line.request)) {
        savePreset(module.effectLibrary(), catalogue, *save);
    } else if (const auto* load = std::get_if<PresetLoadRequest>(&line.request)) {
        printText(loadPresetText(module.effectLibrary(), catalogue, load->file));
    } else if (const auto* check = std::get_if<PresetCheckRequest>(&line.request)) {
        return checkPresets(module.effectLibrary(), catalogue, *check) ? kDone : kFailed;
    } else if (const auto* options = std::get_if<OptionsRequest>(&line.request)) {
        if (options->name.empty()) {
            printText(optionsText(module.effectLibrary()));
        } else {
            setOption(module.effectLibrary(), options->name, options->value);
        }
    } else {
        const auto& request = std::get<RenderRequest>(line.request);
        render(request, buildChain(module.effectLibrary(), catalogue, request.effects));
    }
    return kDone;
}

int run(int argc, const char* const* argv) {
    try {
        return carryOut(parseCommandLine(argc, argv));
    } catch (const UsageError& error) {
        return complain(kWrongUsage, error.what(), " Try \"lumiset --help\".");
    } catch (const hostkit::ParameterError& error) {
        return complain(kWrongUsage, error.what());
    } catch (const std::bad_alloc&) {
        return complain(kFailed, "There is not enough memory.");
    } catch (const std::exception& error) {
        return complain(kFailed, error.what());
    }
}

}  // namespace
}  // namespace lumiset::app

int main(int argc, char** argv) {
    return lumiset::app::run(argc, argv);
}
