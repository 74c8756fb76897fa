#include <algorithm>
#include <array>
#include <utility>

#include <fmt/format.h>

#include "media/file_source.h"
#include "media/paced_source.h"
#include "media/scene_source.h"
#include "media/sinks.h"

namespace lumiset::media {
namespace {

constexpr auto kStills = std::to_array<const char*>({"png", "jpg", "jpeg", "webp", "tif", "tiff", "bmp"});

bool isStillName(const std::string& output) {
    const std::string extension = lowerExtension(output);
    const auto known = [&](const char* still) { return extension == still; };
    if (std::any_of(kStills.begin(), kStills.end(), known)) {
        return true;
    }
    const AVOutputFormat* container = av_guess_format(nullptr, output.c_str(), nullptr);
    return container != nullptr && std::string(container->name) == "image2";
}

// Sound files have a place for a cover picture, but video is nothing that they hold.
bool isVideoName(const std::string& output) {
    if (lowerExtension(output) == "m4v") {
        return true;
    }
    const AVOutputFormat* container = av_guess_format(nullptr, output.c_str(), nullptr);
    if (container == nullptr || container->video_codec == AV_CODEC_ID_NONE) {
        return false;
    }
    const AVCodecDescriptor* codec = avcodec_descriptor_get(container->video_codec);
    const bool cover = codec != nullptr && (codec->id == AV_CODEC_ID_PNG || codec->id == AV_CODEC_ID_MJPEG);
    return !(cover && container->audio_codec != AV_CODEC_ID_NONE) && std::string(container->name) != "ipod";
}

}  // namespace

std::unique_ptr<Source> openSource(const std::string& input, const SourceOptions& options) {
    const bool paced = options.frameRate.num > 0 && options.frameRate.den > 0;
    if (isSceneName(input)) {
        auto scene = openSceneSource(input, paced ? leadingIn(options) : options);
        return paced ? pacedSource(std::move(scene), options.frameRate, options) : std::move(scene);
    }
    Input file;
    file.name = input;
    file.threads = options.threads;
    if (paced) {
        file.sequenceRate = options.frameRate;
    }
    file.sequence = parseSequenceName(input);
    if (file.sequence) {
        findSequence(*file.sequence);
    } else {
        file.sequence = findGlob(input);
    }
    const bool pacedVideo = paced && !file.sequence;
    auto source = openFileSource(file, pacedVideo ? leadingIn(options) : options);
    return pacedVideo || source->format().still ? pacedSource(std::move(source), file.sequenceRate, options)
                                                : std::move(source);
}

std::unique_ptr<Sink> openSink(const std::string& output, const VideoFormat& format, const SinkOptions& options,
                               const Source* copyFrom) {
    if (const auto sequence = parseSequenceName(output)) {
        return openStillSink(output, sequence, format, options);
    }
    if (output != "-" && isStillName(output)) {
        return openStillSink(output, std::nullopt, format, options);
    }
    if (output != "-" && !isVideoName(output)) {
        throw MediaError(fmt::format(
            "The kind of file to write is told by its extension, and that of '{}' is not known; try one of: {}.",
            output, outputExtensions()));
    }
    return openVideoSink(output, format, options, copyFrom);
}

const std::string& outputExtensions() {
    static const std::string extensions = "png jpg webp tiff bmp mp4 mov webm mkv y4m";
    return extensions;
}

}  // namespace lumiset::media
