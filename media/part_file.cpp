#include "media/part_file.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string_view>

#include <fmt/format.h>

#include "media/hash.h"
#include "media/part_json.h"

// The file: a line that tells what it is; each packet's bytes with its side data behind them; JSON of the record, the
// stream and the packets; the size of this in eight bytes, its hash as text, and a last word.

namespace lumiset::media {
namespace {

using nlohmann::json;

constexpr std::string_view kHead = "Lumiset part 1\n";
constexpr std::string_view kTail = "end of part\n";
constexpr std::size_t kHashSize = 32;
constexpr std::size_t kFootSize = 8 + kHashSize + kTail.size();
constexpr std::size_t kBufferSize = 1U << 20U;

std::string sizeBytes(std::uint64_t value) {
    std::string bytes;
    for (int i = 0; i < 8; i++) {
        bytes += static_cast<char>(value >> (8 * i) & 0xFF);
    }
    return bytes;
}

std::uint64_t sizeFromBytes(std::string_view bytes) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < 8; i++) {
        value |= std::uint64_t{static_cast<unsigned char>(bytes[i])} << (8 * i);
    }
    return value;
}

std::string hashOfText(const std::string& text) {
    Hash hash;
    hash.add(text);
    return hash.text();
}

// The frame that a packet of raw pictures points at, as bytes.
std::string bytesOf(const AVFrame& frame) {
    const auto format = static_cast<AVPixelFormat>(frame.format);
    const int size = avCheck(av_image_get_buffer_size(format, frame.width, frame.height, 1), "Cannot write a picture");
    std::string bytes(static_cast<std::size_t>(size), '\0');
    av_image_copy_to_buffer(reinterpret_cast<std::uint8_t*>(bytes.data()), size, frame.data, frame.linesize, format,
                            frame.width, frame.height, 1);
    return bytes;
}

void freeFrame(void*, std::uint8_t* data) {
    auto* frame = reinterpret_cast<AVFrame*>(data);
    av_frame_free(&frame);
}

std::string readAt(const std::string& file, std::uint64_t offset, std::size_t size) {
    std::string bytes(size, '\0');
    std::ifstream stream(file, std::ios::binary);
    stream.seekg(static_cast<std::streamoff>(offset));
    stream.read(bytes.data(), static_cast<std::streamsize>(size));
    bytes.resize(static_cast<std::size_t>(std::max<std::streamsize>(0, stream.gcount())));
    return bytes;
}

}  // namespace

PartWriter::PartWriter(const PartOptions& options) : m_options(options), m_file(options.file) {
    silenceLibraries();
    m_file.write(kHead);
}

void PartWriter::begin(const EncodedVideo& video) {
    m_video = videoJson(video);
}

void PartWriter::add(const void* bytes, std::size_t count) {
    m_buffer.append(static_cast<const char*>(bytes), count);
    if (m_buffer.size() >= kBufferSize) {
        m_file.write(m_buffer);
        m_buffer.clear();
    }
}

void PartWriter::write(AVPacket& packet) {
    std::string bytes;
    const bool wrapped = m_video.find("\"wrapped_avframe\"") != std::string::npos;
    if (wrapped) {
        bytes = bytesOf(*reinterpret_cast<const AVFrame*>(packet.data));
    } else {
        bytes.assign(reinterpret_cast<const char*>(packet.data), static_cast<std::size_t>(packet.size));
    }
    const std::size_t size = bytes.size();
    json sideData = json::array();
    for (int i = 0; i < packet.side_data_elems && !wrapped; i++) {
        const AVPacketSideData& side = packet.side_data[i];
        if (side.type != AV_PKT_DATA_QUALITY_STATS) {
            bytes.append(reinterpret_cast<const char*>(side.data), side.size);
            sideData.push_back({static_cast<int>(side.type), side.size});
        }
    }
    add(bytes.data(), bytes.size());
    m_packets += (m_packets.empty() ? "[" : ",\n") +
                 json{packet.pts, packet.dts, packet.duration, packet.flags, size, sideData, hashOfText(bytes)}.dump();
}

void PartWriter::finish() {
    const std::string text =
        fmt::format("{{\"record\":{},\n\"video\":{},\n\"packets\":{}]}}\n", recordJson(m_options.record),
                    m_video.empty() ? "null" : m_video, m_packets.empty() ? "[" : m_packets);
    m_file.write(m_buffer + text + sizeBytes(text.size()) + hashOfText(text) + std::string(kTail));
    m_file.commit();
}

PartReader::PartReader(const std::string& file) : m_file(file) {
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(file, error);
    if (error) {
        throw MediaError(fmt::format("Cannot read '{}': {}.", file, error.message()));
    }
    if (readAt(file, 0, kHead.size()) != kHead) {
        throw MediaError(fmt::format("'{}' is no part of a film.", file));
    }
    const std::string foot = size < kHead.size() + kFootSize ? "" : readAt(file, size - kFootSize, kFootSize);
    if (foot.size() != kFootSize || !foot.ends_with(kTail)) {
        fail("it was not completed, or its end is lost");
    }
    const std::uint64_t length = sizeFromBytes(foot);
    if (length > size - kHead.size() - kFootSize) {
        fail("it is damaged");
    }
    const std::string text = readAt(file, size - kFootSize - length, length);
    if (hashOfText(text) != std::string_view(foot).substr(8, kHashSize)) {
        fail("it is damaged");
    }
    try {
        parse(text);
    } catch (const nlohmann::json::exception&) {
        fail("it is damaged");
    }
    const std::uint64_t end = m_packets.empty() ? kHead.size() : m_packets.back().offset;
    if (end > size - kFootSize - length) {
        fail("it is damaged");
    }
}

void PartReader::fail(const char* why) const {
    throw MediaError(fmt::format("'{}' cannot be used: {}.", m_file, why));
}

void PartReader::parse(const std::string& text) {
    const json all = json::parse(text);
    m_record = recordFromJson(all.at("record"));
    if (!all.at("video").is_null()) {
        m_video = all.at("video").dump();
        m_codec.reset(allocated(avcodec_parameters_alloc()));
        const EncodedVideo video = videoFromJson(all.at("video"), *m_codec);
        m_timeBase = video.timeBase;
        m_frameRate = video.frameRate;
        if (std::min({m_timeBase.num, m_timeBase.den, m_frameRate.num, m_frameRate.den}) < 1) {
            fail("it is damaged");
        }
    }
    std::uint64_t offset = kHead.size();
    const std::uint64_t limit = std::filesystem::file_size(m_file);
    for (const json& each : all.at("packets")) {
        PartPacket packet;
        packet.pts = each.at(0).get<std::int64_t>();
        packet.dts = each.at(1).get<std::int64_t>();
        packet.duration = each.at(2).get<std::int64_t>();
        packet.flags = each.at(3).get<int>();
        packet.offset = offset;
        packet.size = each.at(4).get<std::size_t>();
        std::uint64_t whole = packet.size;
        for (const json& side : each.at(5)) {
            packet.sideData.emplace_back(side.at(0).get<int>(), side.at(1).get<std::size_t>());
            whole += std::min<std::uint64_t>(packet.sideData.back().second, limit);
        }
        packet.hash = each.at(6).get<std::string>();
        if (packet.size > limit || whole > limit - offset) {
            fail("it is damaged");
        }
        offset += whole;
        m_packets.push_back(std::move(packet));
    }
    if (m_packets.empty() == static_cast<bool>(m_codec) || m_record.number < 1 || m_record.number > m_record.count) {
        fail("it is damaged");
    }
}

EncodedVideo PartReader::encodedVideo() const {
    return {m_codec.get(), m_timeBase, m_frameRate, m_record.filmBegin};
}

AvPacket PartReader::asPicture(const std::string& bytes) const {
    AvFrame frame(allocated(av_frame_alloc()));
    frame->format = m_codec->format;
    frame->width = m_codec->width;
    frame->height = m_codec->height;
    avCheck(av_frame_get_buffer(frame.get(), 0), "Cannot read '" + m_file + "'");
    const auto format = static_cast<AVPixelFormat>(frame->format);
    if (av_image_get_buffer_size(format, frame->width, frame->height, 1) != static_cast<int>(bytes.size())) {
        fail("it is damaged");
    }
    std::uint8_t* planes[4] = {};
    int lines[4] = {};
    av_image_fill_arrays(planes, lines, reinterpret_cast<const std::uint8_t*>(bytes.data()), format, frame->width,
                         frame->height, 1);
    av_image_copy(frame->data, frame->linesize, const_cast<const std::uint8_t**>(planes), lines, format, frame->width,
                  frame->height);
    AvPacket packet(allocated(av_packet_alloc()));
    auto* data = reinterpret_cast<std::uint8_t*>(frame.get());
    packet->buf = allocated(av_buffer_create(data, sizeof(AVFrame), freeFrame, nullptr, 0));
    packet->data = reinterpret_cast<std::uint8_t*>(frame.release());
    packet->size = sizeof(AVFrame);
    return packet;
}

AvPacket PartReader::read(std::size_t place) const {
    const PartPacket& from = m_packets[place];
    std::size_t size = from.size;
    for (const auto& [type, count] : from.sideData) {
        size += count;
    }
    const std::string bytes = readAt(m_file, from.offset, size);
    if (bytes.size() != size || hashOfText(bytes) != from.hash) {
        fail("it is damaged");
    }
    AvPacket packet;
    if (m_codec->codec_id == AV_CODEC_ID_WRAPPED_AVFRAME) {
        packet = asPicture(bytes);
    } else {
        packet.reset(allocated(av_packet_alloc()));
        avCheck(av_new_packet(packet.get(), static_cast<int>(from.size)), "Cannot read '" + m_file + "'");
        std::copy_n(bytes.data(), from.size, packet->data);
    }
    std::size_t at = from.size;
    for (const auto& [type, count] : from.sideData) {
        std::uint8_t* side = av_packet_new_side_data(packet.get(), static_cast<AVPacketSideDataType>(type), count);
        std::copy_n(bytes.data() + at, count, allocated(side));
        at += count;
    }
    packet->pts = from.pts;
    packet->dts = from.dts;
    packet->duration = from.duration;
    packet->flags = from.flags;
    return packet;
}

PartState partStateOf(const std::string& file) {
    std::error_code error;
    if (!std::filesystem::exists(file, error)) {
        return PartState::kAbsent;
    }
    if (readAt(file, 0, kHead.size()) != kHead) {
        return PartState::kForeign;
    }
    try {
        const PartReader part(file);
        for (std::size_t i = 0; i < part.packets().size(); i++) {
            const AvPacket read = part.read(i);
        }
        return PartState::kWhole;
    } catch (const MediaError&) {
        return PartState::kBegun;
    }
}

void markPartBegun(const std::string& file) {
    PendingFile begun(file);
    begun.write(kHead);
    begun.commit();
}

}  // namespace lumiset::media
