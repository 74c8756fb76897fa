#include <memory>

#include "apps/lumiset/commands/commands.h"
#include "apps/lumiset/help.h"
#include "apps/lumiset/render/moment.h"
#include "apps/lumiset/render/output_guard.h"
#include "apps/lumiset/render/render.h"
#include "apps/lumiset/usage_error.h"
#include "media/rate.h"

namespace lumiset::app {
namespace {

class RenderOptions {
public:
    explicit RenderOptions(CLI::App& app) : m_effects(app, EffectOptions::kMaskedChain), m_guard(app) {
        app.add_option("INPUT", m_request.job.input, "what to read")->required();
        app.add_option("OUTPUT", m_request.job.output, "what to write")->required();
        app.add_option("--depth", m_depth,
                       "samples that the effects work in: 8 or float [float where the input has more than 8 bits]")
            ->check(CLI::IsMember({"8", "float"}))
            ->option_text("DEPTH");
        app.add_option("--bits", m_request.job.bits,
                       "bits a sample to write, where the codec has them [the input's; 10 or more with --depth float]")
            ->check(CLI::IsMember({8, 10, 12, 16}))
            ->option_text("N");
        app.add_option("--layout", m_layout, "sample order that the effects work in: bgra or argb [bgra]")
            ->check(CLI::IsMember({"bgra", "argb"}))
            ->option_text("LAYOUT");
        app.add_option("--threads,-j", m_request.job.threads, "frames rendered at the same time [one a core]")
            ->check(CLI::Range(1, 1024))
            ->option_text("N");
        app.add_option("--start", m_start, "time in the input to start at, in seconds or h:m:s")->option_text("TIME");
        app.add_option("--duration", m_duration, "how much of the input to render, likewise")->option_text("TIME");
        app.add_option("--codec", m_request.job.codec, "video codec of the output [the usual one for its extension]")
            ->option_text("NAME");
        app.add_option("--quality", m_request.job.quality,
                       "H.264, HEVC, VP8, VP9, AV1: constant rate factor; JPEG, MPEG: 2 (best) to 31")
            ->check(CLI::Range(0, 63))
            ->option_text("N");
        app.add_option("--fps", m_rate,
                       "pictures a second, as 24, 29.97 or 24000/1001 [the input's; 25 for image sequences]")
            ->option_text("RATE");
        app.add_flag("--alpha", m_request.job.alpha,
                     "write transparency; without it only where the input has it or the first result shows it");
        app.add_flag(
            "--gpu", m_request.job.gpu,
            "render in OpenGL; frames that cannot be are left to the processor, as all are where there is none");
        app.add_flag("--quiet,-q", m_request.quiet, "no progress and no summary");
    }

    void guardOutput(const hostkit::EffectCatalogue& catalogue, const RenderRequest& request) const {
        std::vector<std::string> inputs = filesRead(catalogue, request.effects);
        inputs.push_back(request.job.input);
        m_guard.check(request.job.output, inputs);
    }

    /// The request, once the arguments have been read. Throws `UsageError`.
    [[nodiscard]] RenderRequest request() const {
        RenderRequest request = m_request;
        request.effects = m_effects.requests();
        if (!m_depth.empty()) {
            request.job.depth = m_depth == "float" ? media::Depth::kFloat : media::Depth::kEightBit;
        }
        request.job.argb = m_layout == "argb";
        if (!m_start.empty()) {
            request.job.startSeconds = parseTime(m_start, "--start");
        }
        if (!m_duration.empty()) {
            request.job.durationSeconds = parseTime(m_duration, "--duration");
            if (!(request.job.durationSeconds > 0.0)) {
                throw UsageError("--duration must be longer than 0.");
            }
        }
        if (!m_rate.empty()) {
            const auto rate = media::parseRate(m_rate);
            if (!rate) {
                throw UsageError("--fps takes a number or a fraction of pictures a second, not \"" + m_rate + "\".");
            }
            request.job.frameRate = *rate;
        }
        return request;
    }

private:
    EffectOptions m_effects;
    OutputGuard m_guard;
    RenderRequest m_request;
    std::string m_depth;
    std::string m_layout = "bgra";
    std::string m_start;
    std::string m_duration;
    std::string m_rate;
};

}  // namespace

void addRenderCommand(CLI::App& app, Program& program) {
    CLI::App& command = addCommand(app, "render", "Renders images or video through effects", help::kRender);
    command.footer(help::kRenderFooter);
    const auto options = std::make_shared<RenderOptions>(command);
    program.onChosen(command, [options, &program] {
        const RenderRequest request = options->request();
        const std::vector<hostkit::EffectStage> chain =
            buildChain(program.effectLibrary(), program.catalogue(), request.effects, request.job.input);
        options->guardOutput(program.catalogue(), request);
        render(request, program.effectLibrary(), chain);
        return kDone;
    });
}

}  // namespace lumiset::app
