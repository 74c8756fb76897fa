#include "apps/lumiset/render/render_options.h"

#include <fmt/format.h>

#include <string_view>

#include "apps/lumiset/render/moment.h"
#include "apps/lumiset/usage_error.h"
#include "media/input_name.h"
#include "media/rate.h"
#include "media/resize.h"

namespace lumiset::app {
namespace {

void readSize(const std::string& text, render::FileJob& job) {
    const std::size_t cross = text.find('x');
    const auto side = [](std::string_view digits) {
        return digits.empty() ? 0 : media::parseWhole(digits).value_or(-1);
    };
    const auto isGood = [](int pixels) {
        return pixels == 0 || (pixels >= media::kSmallestSide && pixels <= media::kLargestSide);
    };
    if (cross != std::string::npos) {
        job.width = side(std::string_view(text).substr(0, cross));
        job.height = side(std::string_view(text).substr(cross + 1));
    }
    if (!isGood(job.width) || !isGood(job.height) || (job.width == 0 && job.height == 0)) {
        throw UsageError(fmt::format("--size takes 1280x720, 1280x or x720, sides of {} to {} pixels, not \"{}\".",
                                     media::kSmallestSide, media::kLargestSide, text));
    }
}

}  // namespace

RenderOptions::RenderOptions(CLI::App& command) : m_effects(command, EffectOptions::kMaskedChain) {
    command.add_option("INPUT", m_request.job.input, "what to read")->required();
    command.add_option("OUTPUT", m_request.job.output, "what to write")->required();
    command
        .add_option("--depth", m_depth,
                    "samples that the effects work in: 8 or float [float where the input has more than 8 bits]")
        ->check(CLI::IsMember({"8", "float"}))
        ->option_text("DEPTH");
    command
        .add_option("--bits", m_request.job.bits,
                    "bits a sample to write, where the codec has them [the input's; 10 or more with --depth float]")
        ->check(CLI::IsMember({8, 10, 12, 16}))
        ->option_text("N");
    command
        .add_option("--size", m_size,
                    "size to write, 1280x720 for example, or one side, 1280x or x720; effects work at the input's")
        ->option_text("WIDTHxHEIGHT");
    command.add_option("--layout", m_layout, "sample order that the effects work in: bgra or argb [bgra]")
        ->check(CLI::IsMember({"bgra", "argb"}))
        ->option_text("LAYOUT");
    command.add_option("--threads,-j", m_request.job.threads, "frames rendered at the same time [one a core]")
        ->check(CLI::Range(1, 1024))
        ->option_text("N");
    command.add_option("--start", m_start, "time in the input to start at, in seconds or h:m:s")->option_text("TIME");
    command.add_option("--duration", m_duration, "how much of the input to render, likewise")->option_text("TIME");
    command.add_option("--codec", m_request.job.codec, "video codec of the output [the usual one for its extension]")
        ->option_text("NAME");
    command
        .add_option("--quality", m_request.job.quality,
                    "H.264, HEVC, VP8, VP9, AV1: constant rate factor; JPEG, MPEG: 2 (best) to 31")
        ->check(CLI::Range(0, 63))
        ->option_text("N");
    command
        .add_option("--fps", m_rate,
                    "pictures a second, as 24, 29.97 or 24000/1001 [the input's; 25 for image sequences]")
        ->option_text("RATE");
    command.add_flag("--alpha", m_request.job.alpha,
                     "write transparency; without it only where the input has it or the first result shows it");
    command.add_flag(
        "--gpu", m_request.job.gpu,
        "render in OpenGL; frames that cannot be are left to the processor, as all are where there is none");
    command.add_flag("--quiet,-q", m_request.quiet, "no progress and no summary");
}

RenderRequest RenderOptions::request() const {
    RenderRequest request = m_request;
    request.effects = m_effects.requests();
    if (!m_depth.empty()) {
        request.job.depth = m_depth == "float" ? media::Depth::kFloat : media::Depth::kEightBit;
    }
    if (!m_size.empty()) {
        readSize(m_size, request.job);
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

}  // namespace lumiset::app
