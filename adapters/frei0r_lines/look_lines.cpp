#include "adapters/frei0r_lines/look_lines.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>

#include "hostkit/renderer.h"
#include "media/input_name.h"
#include "media/media.h"
#include "media/picture_color.h"
#include "render/picture_frame.h"

namespace lumiset::frei0r {

std::vector<Settings> settingsOf(const hostkit::EffectCatalogue& catalogue, const hostkit::Look& look) {
    std::vector<Settings> settings;
    for (const hostkit::LookEffect& each : look.effects) {
        if (each.off) {
            continue;
        }
        const bool moves = std::any_of(each.parameters.begin(), each.parameters.end(),
                                       [](const hostkit::LookParameter& set) { return !set.keys.empty(); });
        if (moves || each.strength < 100.0 || look.strength < 100.0) {
            throw hostkit::LookError(
                fmt::format("The look \"{}\" has {}, which plug-ins of other programs do not do. "
                            "\"lumiset render INPUT - ... | ffmpeg -i - OUTPUT\" hands its pictures on.",
                            look.name, moves ? "keys" : "a strength below 100"));
        }
        settings.push_back(settingsOf(hostkit::valuesOf(catalogue.effect(each.effect), each, 0.0)));
    }
    if (settings.empty()) {
        throw hostkit::LookError(fmt::format("The look \"{}\" has no effect that is on.", look.name));
    }
    return settings;
}

Clip clipOf(IEffectLibrary& library, const hostkit::EffectCatalogue& catalogue, const hostkit::Look& look,
            const std::string& input, const std::string& output) {
    const std::unique_ptr<media::Source> source = media::openSource(input);
    const media::VideoFormat& format = source->format();
    media::Picture picture;
    if (!source->read(picture)) {
        throw media::MediaError("There is no picture in \"" + input + "\".");
    }
    media::Picture result;
    result.allocate(picture.width, picture.height, picture.depth);
    const hostkit::FrameContext context = render::contextOf(picture, format);
    const std::vector<hostkit::EffectStage> chain = hostkit::buildChain(library, catalogue, {{look, nullptr}}, 0.0);
    hostkit::Renderer(chain, kFormatBgra8).render(render::frameOf(picture), render::frameOf(result), context);
    Clip clip;
    clip.input = input;
    clip.output = output;
    clip.width = format.width;
    clip.height = format.height;
    clip.pixelAspect = context.pixelAspect;
    clip.fields = context.fields;
    clip.alpha = format.color.hasAlpha() || !media::isOpaque(result);
    clip.matrix = media::settledColor(format.color, AV_PIX_FMT_YUV420P, format.width, format.height).matrix;
    if (!media::filesNamed(input).empty() && media::filesNamed(input).front() != input) {
        clip.sequenceRate = format.frameRate.value();
        clip.firstNumber = format.firstNumber;
    }
    return clip;
}

}  // namespace lumiset::frei0r
