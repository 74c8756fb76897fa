#include "apps/lumiset/cluster/part_request.h"

#include <fmt/format.h>

#include <fstream>
#include <iterator>
#include <stdexcept>

#include "apps/lumiset/messages.h"
#include "apps/lumiset/usage_error.h"
#include "hostkit/look_json.h"
#include "media/hash.h"
#include "media/input_name.h"
#include "media/part_file.h"

namespace lumiset::app {
namespace {

using Traits = std::vector<std::pair<std::string, std::string>>;

constexpr int kMostParts = 9999;

void readNumbers(const std::string& text, render::FilmPart& part) {
    const std::size_t slash = text.find('/');
    const std::string_view behind = slash == std::string::npos ? "" : std::string_view(text).substr(slash + 1);
    part.number = media::parseWhole(std::string_view(text).substr(0, slash)).value_or(0);
    part.count = media::parseWhole(behind).value_or(0);
    if (part.number < 1 || part.number > part.count || part.count > kMostParts) {
        throw UsageError(
            fmt::format("--part takes K/N, the K-th of N parts, at most {0}/{0}, not \"{1}\".", kMostParts, text));
    }
}

std::string hashOfFile(const std::string& name) {
    std::ifstream file(name, std::ios::binary);
    media::Hash hash;
    hash.add(std::string(std::istreambuf_iterator<char>(file), {}));
    return hash.text();
}

/// What a look does, without what people write about it.
std::string effectsOf(Program& program, const EffectRequest& request) {
    hostkit::Look look = lookOf(program.effectLibrary(), program.catalogue(), request);
    look.name = "look";
    look.about.clear();
    look.author.clear();
    look.clip.clear();
    return hostkit::lookToJson(program.catalogue(), look);
}

/// Everything that decides about the pictures, under the name that a sentence has for it.
Traits traitsOf(Program& program, const RenderRequest& request) {
    const render::FileJob& job = request.job;
    media::Hash looks;
    std::string masks;
    for (const EffectRequest& each : request.effects) {
        looks.add(effectsOf(program, each));
        masks += each.mask.empty() ? "-" : media::identityOf(each.mask, false);
    }
    const std::string depth = !job.depth ? "the input's" : *job.depth == media::Depth::kFloat ? "float" : "8";
    return {{"version of the program", LUMISET_VERSION},
            {"version of the FFmpeg libraries", media::codecsVersion()},
            {"effects module", hashOfFile(program.module().path().string())},
            {media::kInputTrait, media::identityOf(job.input, false)},
            {media::kKindTrait, media::joinableKind(job.output)},
            {"look", looks.text()},
            {"mask", masks},
            {"--start", fmt::format("{}", job.startSeconds)},
            {"--duration", fmt::format("{}", job.durationSeconds)},
            {"--fps", fmt::format("{}/{}", job.frameRate.num, job.frameRate.den)},
            {"--size", fmt::format("{}x{}", job.width, job.height)},
            {"--depth", depth},
            {"--bits", fmt::format("{}", job.bits)},
            {"--layout", job.argb ? "argb" : "bgra"},
            {"--codec", job.codec},
            {"--quality", fmt::format("{}", job.quality)},
            {"--alpha", job.alpha ? "yes" : "no"},
            {"--gpu", job.gpu ? "yes" : "no"}};
}

/// How a part that is there was made otherwise than it is asked for; empty where it was not.
std::string differenceOfPart(const std::string& file, const render::FileJob& job) {
    media::PartRecord wanted;
    wanted.count = job.part->count;
    wanted.traits = job.part->traits;
    wanted.input = media::absoluteInput(job.input);
    wanted.inputState = media::identityOf(job.input, true);
    return media::differenceOf(wanted, media::PartReader(file).record());
}

}  // namespace

bool takePart(Program& program, RenderRequest& request, const std::string& text, const std::vector<std::string>& inputs,
              const OutputGuard& guard) {
    render::FileJob& job = request.job;
    render::FilmPart part;
    readNumbers(text, part);
    if (job.input == "-") {
        throw UsageError("--part cannot cut standard input, which can be read only once.");
    }
    part.traits = traitsOf(program, request);
    part.replace = guard.overwrites();
    job.part = part;

    const std::string file = media::partFile(job.output, part.number, part.count);
    OutputGuard::refuseInputs(job.output, inputs);
    OutputGuard::refuseInputs(file, inputs);
    const media::PartState state = media::partStateOf(file);
    if (state == media::PartState::kForeign && !guard.overwrites()) {
        throw std::runtime_error(fmt::format("\"{}\" exists and is no part of a film; --overwrite replaces it.", file));
    }
    if (state == media::PartState::kWhole) {
        const std::string difference = differenceOfPart(file, job);
        if (!difference.empty() && !guard.overwrites()) {
            throw std::runtime_error(
                fmt::format("\"{}\" was made with another {}; --overwrite replaces it.", file, difference));
        }
        const bool lost = !media::lostPicture(media::PartReader(file).record(), job.output).empty();
        if (difference.empty() && !lost && !guard.overwrites()) {
            tell(request.quiet ? "" : file + ": is finished.\n");
            return false;
        }
        job.part->replace = true;
    }
    job.part->replace = job.part->replace || state == media::PartState::kBegun;
    return true;
}

}  // namespace lumiset::app
