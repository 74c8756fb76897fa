#include "media/part_json.h"

#include <array>
#include <cmath>
#include <cstdlib>
#include <nlohmann/json.hpp>

#include <fmt/format.h>

namespace lumiset::media {
namespace {

using nlohmann::json;

// Names of files are bytes, texts of JSON are Unicode: each byte becomes the character of its number.
std::string textOf(const std::string& bytes) {
    std::string text;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80) {
            text += c;
        } else {
            text += {static_cast<char>(0xC0 | byte >> 6), static_cast<char>(0x80 | (byte & 0x3F))};
        }
    }
    return text;
}

std::string bytesOf(const std::string& text) {
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); i++) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const bool pair = byte >= 0xC0 && i + 1 < text.size();
        bytes += pair ? static_cast<char>((byte & 3) << 6 | (text[++i] & 0x3F)) : text[i];
    }
    return bytes;
}

std::string hexOf(const std::uint8_t* bytes, int count) {
    return fmt::format("{:02x}", fmt::join(bytes, bytes + count, ""));
}

json seamJson(const std::optional<Seam>& seam) {
    return seam ? json{seam->pts, seam->picture} : json();
}

std::optional<Seam> seamFrom(const json& from) {
    return from.is_null() ? std::nullopt
                          : std::optional(Seam{from.at(0).get<std::int64_t>(), from.at(1).get<std::string>()});
}

Rational rationalFrom(const json& from) {
    return {from.at(0).get<int>(), from.at(1).get<int>()};
}

/// The numbers of AVCodecParameters that a stream of pictures has.
struct Field {
    const char* name;
    int AVCodecParameters::*place;
};
constexpr Field kFields[] = {
    {"format", &AVCodecParameters::format},
    {"bitsCoded", &AVCodecParameters::bits_per_coded_sample},
    {"bitsRaw", &AVCodecParameters::bits_per_raw_sample},
    {"profile", &AVCodecParameters::profile},
    {"level", &AVCodecParameters::level},
    {"width", &AVCodecParameters::width},
    {"height", &AVCodecParameters::height},
    {"delay", &AVCodecParameters::video_delay},
};

}  // namespace

std::string recordJson(const PartRecord& record) {
    const double duration = record.durationSeconds;
    json traits = json::array();
    for (const auto& [name, value] : record.traits) {
        traits.push_back({name, textOf(value)});
    }
    return json{{"part", {record.number, record.count}},
                {"input", textOf(record.input)},
                {"inputState", textOf(record.inputState)},
                {"start", record.startSeconds},
                {"duration", std::isfinite(duration) ? json(duration) : json()},
                {"rate", {record.frameRate.num, record.frameRate.den}},
                {"traits", traits},
                {"filmBegin", record.filmBegin},
                {"begin", record.begin},
                {"end", record.end},
                {"first", seamJson(record.first)},
                {"next", seamJson(record.next)},
                {"firstNumber", record.firstNumber},
                {"fileSizes", record.fileSizes}}
        .dump();
}

PartRecord recordFromJson(const json& from) {
    PartRecord record;
    record.number = from.at("part").at(0).get<int>();
    record.count = from.at("part").at(1).get<int>();
    record.input = bytesOf(from.at("input").get<std::string>());
    record.inputState = bytesOf(from.at("inputState").get<std::string>());
    record.startSeconds = from.at("start").get<double>();
    if (!from.at("duration").is_null()) {
        record.durationSeconds = from.at("duration").get<double>();
    }
    record.frameRate = rationalFrom(from.at("rate"));
    for (const nlohmann::json& trait : from.at("traits")) {
        record.traits.emplace_back(trait.at(0).get<std::string>(), bytesOf(trait.at(1).get<std::string>()));
    }
    record.filmBegin = from.at("filmBegin").get<std::int64_t>();
    record.begin = from.at("begin").get<std::int64_t>();
    record.end = from.at("end").get<std::int64_t>();
    record.first = seamFrom(from.at("first"));
    record.next = seamFrom(from.at("next"));
    record.firstNumber = from.at("firstNumber").get<std::int64_t>();
    record.fileSizes = from.at("fileSizes").get<std::vector<std::uintmax_t>>();
    return record;
}

std::string videoJson(const EncodedVideo& video) {
    const AVCodecParameters& codec = *video.codec;
    json out{{"codec", avcodec_get_name(codec.codec_id)},
             {"tag", codec.codec_tag},
             {"bitRate", codec.bit_rate},
             {"aspect", {codec.sample_aspect_ratio.num, codec.sample_aspect_ratio.den}},
             {"fields", static_cast<int>(codec.field_order)},
             {"color",
              {static_cast<int>(codec.color_range), static_cast<int>(codec.color_primaries),
               static_cast<int>(codec.color_trc), static_cast<int>(codec.color_space),
               static_cast<int>(codec.chroma_location)}},
             {"extra", hexOf(codec.extradata, codec.extradata_size)},
             {"timeBase", {video.timeBase.num, video.timeBase.den}},
             {"rate", {video.frameRate.num, video.frameRate.den}}};
    for (const Field& field : kFields) {
        out[field.name] = codec.*field.place;
    }
    return out.dump();
}

EncodedVideo videoFromJson(const json& from, AVCodecParameters& codec) {
    const AVCodecDescriptor* descriptor = avcodec_descriptor_get_by_name(from.at("codec").get<std::string>().c_str());
    codec.codec_type = AVMEDIA_TYPE_VIDEO;
    codec.codec_id = descriptor == nullptr ? AV_CODEC_ID_NONE : descriptor->id;
    codec.codec_tag = from.at("tag").get<std::uint32_t>();
    codec.bit_rate = from.at("bitRate").get<std::int64_t>();
    codec.sample_aspect_ratio = avRational(rationalFrom(from.at("aspect")));
    codec.field_order = static_cast<AVFieldOrder>(from.at("fields").get<int>());
    const auto color = from.at("color").get<std::array<int, 5>>();
    codec.color_range = static_cast<AVColorRange>(color[0]);
    codec.color_primaries = static_cast<AVColorPrimaries>(color[1]);
    codec.color_trc = static_cast<AVColorTransferCharacteristic>(color[2]);
    codec.color_space = static_cast<AVColorSpace>(color[3]);
    codec.chroma_location = static_cast<AVChromaLocation>(color[4]);
    const auto extra = from.at("extra").get<std::string>();
    if (!extra.empty()) {
        const std::size_t size = extra.size() / 2;
        codec.extradata = static_cast<std::uint8_t*>(allocated(av_mallocz(size + AV_INPUT_BUFFER_PADDING_SIZE)));
        codec.extradata_size = static_cast<int>(size);
        for (std::size_t i = 0; i < size; i++) {
            codec.extradata[i] = static_cast<std::uint8_t>(std::strtoul(extra.substr(2 * i, 2).c_str(), nullptr, 16));
        }
    }
    for (const Field& field : kFields) {
        codec.*field.place = from.at(field.name).get<int>();
    }
    EncodedVideo video;
    video.codec = &codec;
    video.timeBase = avRational(rationalFrom(from.at("timeBase")));
    video.frameRate = rationalFrom(from.at("rate"));
    return video;
}

}  // namespace lumiset::media
