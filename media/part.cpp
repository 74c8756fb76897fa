#include "media/part.h"

#include <algorithm>
#include <cmath>
#include <filesystem>

#include <fmt/format.h>

#include "media/input_name.h"
#include "media/scene_source.h"
#include "media/video_file.h"
#include "media/video_plan.h"

namespace lumiset::media {
namespace {

/// Containers whose files are put together packet by packet.
constexpr const char* kJoinable[] = {"mp4", "mov", "matroska", "webm", "mpegts", "avi", "yuv4mpegpipe"};

}  // namespace

std::string partFile(const std::string& output, int number, int count) {
    const auto digits = std::to_string(count).size();
    const std::size_t colon = output.rfind(':');
    const bool numbered = parseSequenceName(output) && parseSequenceName(output)->first;
    return fmt::format("{}.part{:0{}}of{}", numbered ? output.substr(0, colon) : output, number, digits, count);
}

std::string absoluteInput(const std::string& input) {
    return isSceneName(input) ? input : std::filesystem::absolute(input).string();
}

std::string joinableKind(const std::string& output) {
    if (parseSequenceName(output)) {
        return kPicturesKind;
    }
    const AVOutputFormat* container = output == "-" ? nullptr : containerOf(output);
    const auto known = [&](const char* name) { return container != nullptr && std::string(container->name) == name; };
    if (std::none_of(std::begin(kJoinable), std::end(kJoinable), known)) {
        throw MediaError(fmt::format(
            "{} cannot be put together from parts; mp4, mov, mkv, webm, ts, avi and y4m files and sequences of "
            "pictures can.",
            output == "-" ? "Standard output" : "A file like '" + output + "'"));
    }
    return container->name;
}

Rational cuttingRate(const std::string& output, const VideoFormat& format, const SinkOptions& options) {
    if (parseSequenceName(output)) {
        return format.frameRate;
    }
    const VideoPlan plan = planVideo(*containerOf(output), output, options, {format, format.color.hasAlpha()});
    return plan.frameRate.num > 0 ? plan.frameRate : format.frameRate;
}

std::int64_t slotOf(std::int64_t pts, Rational timeBase, Rational rate) {
    return std::llround(static_cast<double>(pts) * timeBase.value() * rate.value());
}

std::int64_t partBegin(const VideoFormat& format, Rational rate, std::int64_t filmBegin, int number, int count) {
    if (!(format.durationSeconds > 0)) {
        throw MediaError("The input does not tell how long it is, so it cannot be cut into parts.");
    }
    const std::int64_t slots = std::max<std::int64_t>(1, std::llround(format.durationSeconds * rate.value()));
    const std::int64_t slot = slots / count * (number - 1) + slots % count * (number - 1) / count;
    if (slot == 0) {
        return filmBegin;
    }
    const double ticks = (static_cast<double>(slot) - 0.5) / (format.timeBase.value() * rate.value());
    auto begin = static_cast<std::int64_t>(std::ceil(ticks));
    while (slotOf(begin, format.timeBase, rate) < slot) {
        begin++;
    }
    while (begin > 0 && slotOf(begin - 1, format.timeBase, rate) >= slot) {
        begin--;
    }
    return filmBegin + begin;
}

std::int64_t picturesBetween(const Source& source, const SourceOptions& options, std::int64_t begin, std::int64_t end) {
    const Source::Origin origin = source.origin();
    if (origin.path.empty() || options.frameRate.num > 0) {
        return end - begin;  // pictures one after the other
    }
    AVFormatContext* context = nullptr;
    avCheck(avformat_open_input(&context, origin.path.c_str(), nullptr, nullptr), "Cannot count the pictures");
    const AvInput input(context);
    avCheck(avformat_find_stream_info(context, nullptr), "Cannot count the pictures");
    const int index = av_find_best_stream(context, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    avCheck(index, "Cannot count the pictures");
    for (unsigned i = 0; i < context->nb_streams; i++) {
        context->streams[i]->discard = static_cast<int>(i) == index ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
    }
    const std::int64_t first = std::llround(origin.firstPictureSeconds / source.format().timeBase.value());
    const AVStream& stream = *context->streams[index];
    std::int64_t count = 0;
    const AvPacket packet(allocated(av_packet_alloc()));
    // Pictures that show earlier may be stored later, by a little.
    const double enough = static_cast<double>(end) * source.format().timeBase.value() + 10;
    while (av_read_frame(context, packet.get()) >= 0) {
        const std::int64_t time = packet->pts != AV_NOPTS_VALUE ? packet->pts : packet->dts;
        if (packet->stream_index == index && time == AV_NOPTS_VALUE) {
            throw MediaError("The input does not tell the times of its pictures, so they cannot be numbered in parts.");
        }
        const bool shown = packet->stream_index == index && (packet->flags & AV_PKT_FLAG_DISCARD) == 0;
        count += shown && time - first >= begin && time - first < end ? 1 : 0;
        const bool over = static_cast<double>(time - first) * av_q2d(stream.time_base) > enough;
        av_packet_unref(packet.get());
        if (over) {
            break;
        }
    }
    return count;
}

std::string differenceOf(const PartRecord& part, const PartRecord& other) {
    if (part.count != other.count) {
        return "number of parts";
    }
    for (const auto& [name, value] : part.traits) {
        const auto same = std::find_if(other.traits.begin(), other.traits.end(),
                                       [&, &wanted = name](const auto& each) { return each.first == wanted; });
        if (same == other.traits.end() || same->second != value) {
            return name;
        }
    }
    // A copy on another disk may have another time; a file in its place has not.
    return part.input == other.input && part.inputState != other.inputState ? "state of the input" : "";
}

std::string lostPicture(const PartRecord& record, const std::string& output) {
    const SequenceName sequence = parseSequenceName(output).value_or(SequenceName{output, {}, {}, false});
    auto number = static_cast<int>(record.firstNumber);
    for (const std::uintmax_t size : record.fileSizes) {
        const std::string name = sequence.fileName(number++);
        std::error_code error;
        if (std::filesystem::file_size(name, error) != size || error) {
            return name;
        }
    }
    return {};
}

std::string codecsVersion() {
    const unsigned version = avcodec_version();
    return fmt::format("{}.{}.{}", AV_VERSION_MAJOR(version), AV_VERSION_MINOR(version), AV_VERSION_MICRO(version));
}

}  // namespace lumiset::media
