#include <fmt/format.h>

#include <cstdio>
#include <exception>
#include <new>
#include <type_traits>

#include "apps/lumiset/chain.h"
#include "apps/lumiset/command_line.h"
#include "apps/lumiset/gpu_commands.h"
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

void carryOut(const CommandLine& line) {
    if (const auto* text = std::get_if<TextRequest>(&line.request)) {
        printText(text->text);
        return;
    }
    if (std::holds_alternative<GPUInfoRequest>(line.request)) {
        printText(gpuInfoText());
        return;
    }
    const hostkit::Module module(line.modulePath);
    const hostkit::EffectCatalogue catalogue(module.library());
    if (const auto* list = std::get_if<ListRequest>(&line.request)) {
        printText(list->json ? listJson(catalogue) : listText(catalogue));
    } else if (const auto* show = std::get_if<ShowRequest>(&line.request)) {
        const hostkit::EffectDescription& effect = catalogue.effect(show->effect);
        printText(show->json ? showJson(effect) : showText(effect));
    } else {
        const auto& request = std::get<RenderRequest>(line.request);
        render(request, buildChain(module.library(), catalogue, request.effects));
    }
}

int run(int argc, const char* const* argv) {
    try {
        carryOut(parseCommandLine(argc, argv));
        return kDone;
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
