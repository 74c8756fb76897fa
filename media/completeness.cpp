#include "media/completeness.h"

#include <array>
#include <bit>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string_view>

namespace lumiset::media {
namespace {

constexpr std::uint64_t kEbmlHeader = 0x1A45DFA3;
constexpr std::uint64_t kSegment = 0x18538067;

// A number of EBML (RFC 8794): the count of leading zero bits in the first byte tells its length.
std::optional<std::uint64_t> readVariableInt(std::istream& file, bool keepMarker, bool& unknown) {
    const int first = file.get();
    if (first <= 0) {
        return std::nullopt;
    }
    const int length = std::countl_zero(static_cast<unsigned char>(first)) + 1;
    std::uint64_t value = static_cast<std::uint64_t>(keepMarker ? first : first & ((1 << (8 - length)) - 1));
    for (int i = 1; i < length; i++) {
        value = value << 8 | static_cast<std::uint64_t>(file.get() & 0xFF);
    }
    unknown = !keepMarker && value == (std::uint64_t{1} << (7 * length)) - 1;
    return file ? std::optional(value) : std::nullopt;
}

// Matroska's segment tells its size, unless it was written to a pipe.
bool segmentIsCut(const std::string& path) {
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    std::ifstream file(std::filesystem::path(path), std::ios::binary);
    for (int elements = 0; !error && elements < 4; elements++) {
        bool unknown = false;
        const auto id = readVariableInt(file, true, unknown);
        const auto length = readVariableInt(file, false, unknown);
        if (!id || !length || (*id != kEbmlHeader && *id != kSegment)) {
            return false;
        }
        const auto begin = static_cast<std::uintmax_t>(file.tellg());
        if (*id == kSegment) {
            return !unknown && begin + *length > size;
        }
        file.seekg(static_cast<std::streamoff>(*length), std::ios::cur);
    }
    return false;
}

// The chunks at the top of an AVI file, one after the other, tell their sizes (RIFF, OpenDML). One that was never
// completed tells none.
bool riffIsCut(const std::string& path) {
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    std::ifstream file(std::filesystem::path(path), std::ios::binary);
    for (std::uintmax_t at = 0; !error && at + 8 <= size;) {
        std::array<unsigned char, 8> head{};
        file.seekg(static_cast<std::streamoff>(at));
        file.read(reinterpret_cast<char*>(head.data()), head.size());
        const std::uintmax_t length = std::uintmax_t{head[4]} | std::uintmax_t{head[5]} << 8U |
                                      std::uintmax_t{head[6]} << 16U | std::uintmax_t{head[7]} << 24U;
        if (!file || std::string_view(reinterpret_cast<char*>(head.data()), 4) != "RIFF" || length == 0) {
            return false;
        }
        at += 8 + length + length % 2;
        if (at > size + 1) {
            return true;
        }
    }
    return false;
}

// A transport stream is packets of one size, each behind its sync byte, Blu-ray's with four bytes before it.
bool packetsAreCut(const std::string& path) {
    constexpr char kSync = 0x47;
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    std::ifstream file(std::filesystem::path(path), std::ios::binary);
    std::array<char, 192 + 5> head{};
    file.read(head.data(), head.size());
    if (error || !file) {
        return false;
    }
    return head[0] == kSync && head[188] == kSync   ? size % 188 != 0
           : head[4] == kSync && head[196] == kSync ? size % 192 != 0
                                                    : false;
}

}  // namespace

bool endsTooEarly(const AVFormatContext& container, const AVStream& stream, const ReadSoFar& read) {
    const std::string demuxer = container.iformat->name;
    const std::string url = container.url;
    if (demuxer.starts_with("matroska") && url.starts_with("file:")) {
        return segmentIsCut(url.substr(5));
    }
    if (demuxer == "avi" && url.starts_with("file:")) {
        return riffIsCut(url.substr(5));
    }
    if (demuxer == "mpegts" && url.starts_with("file:")) {
        return packetsAreCut(url.substr(5));
    }
    if (demuxer.starts_with("mov")) {
        // The table of samples stands apart from them.
        AVStream& indexed = const_cast<AVStream&>(stream);  // only looked at
        const int count = avformat_index_get_entries_count(&indexed);
        const AVIndexEntry* last = count > 0 ? avformat_index_get_entry(&indexed, count - 1) : nullptr;
        return last != nullptr && read.lastPacketPosition >= 0 && read.lastPacketPosition < last->pos;
    }
    if (demuxer == "yuv4mpegpipe" && container.pb != nullptr && read.lastPacketPosition >= 0) {
        return avio_tell(container.pb) > read.lastPacketPosition + read.lastPacketSize;
    }
    return false;
}

}  // namespace lumiset::media
