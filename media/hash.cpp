#include "media/hash.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>

#include <fmt/format.h>

#include "media/av.h"
#include "media/input_name.h"
#include "media/scene_source.h"

extern "C" {
#include <libavutil/murmur3.h>
}

namespace fs = std::filesystem;

namespace lumiset::media {
namespace {

constexpr std::uintmax_t kBlockSize = 1U << 16U;
/// Of a file, and files of a sequence, that are looked at.
constexpr std::uintmax_t kBlocks = 16;
constexpr std::size_t kMostFiles = 16;

void addFrame(Hash& hash, const AVFrame& frame) {
    const auto format = static_cast<AVPixelFormat>(frame.format);
    const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(format);
    for (int plane = 0; plane < av_pix_fmt_count_planes(format); plane++) {
        const bool halved = plane == 1 || plane == 2;
        const int rows = halved ? AV_CEIL_RSHIFT(frame.height, descriptor->log2_chroma_h) : frame.height;
        const int bytes = av_image_get_linesize(format, frame.width, plane);
        for (int y = 0; y < rows && bytes > 0; y++) {
            hash.add(frame.data[plane] + std::ptrdiff_t{y} * frame.linesize[plane], static_cast<std::size_t>(bytes));
        }
    }
}

void addFile(Hash& hash, const std::string& name, bool when) {
    std::error_code error;
    const std::uintmax_t size = fs::file_size(name, error);
    std::ifstream file(name, std::ios::binary);
    if (error || !file) {
        throw MediaError(fmt::format("Cannot read '{}'.", name));
    }
    hash.add(fmt::format("{};", size));
    if (when) {
        hash.add(fmt::format("{};", fs::last_write_time(name, error).time_since_epoch().count()));
    }
    std::vector<char> block(kBlockSize);
    for (std::uintmax_t i = 0; i < kBlocks; i++) {
        // The first and the last block are among them; smaller files are read whole.
        const std::uintmax_t at =
            size <= kBlockSize * kBlocks ? i * kBlockSize : (size - kBlockSize) / (kBlocks - 1) * i;
        const std::uintmax_t end = i + 1 == kBlocks ? size : std::min(size, at + kBlockSize);
        const std::uintmax_t begin = i + 1 == kBlocks && size > kBlockSize * kBlocks ? size - kBlockSize : at;
        if (begin >= end) {
            break;
        }
        file.seekg(static_cast<std::streamoff>(begin));
        file.read(block.data(), static_cast<std::streamsize>(std::min(end - begin, kBlockSize)));
        hash.add(block.data(), static_cast<std::size_t>(file.gcount()));
    }
}

}  // namespace

Hash::Hash() : m_hash(allocated(av_murmur3_alloc())) {
    av_murmur3_init(m_hash.get());
}

void Hash::Free::operator()(AVMurMur3* hash) const {
    av_free(hash);
}

void Hash::add(const void* bytes, std::size_t count) {
    av_murmur3_update(m_hash.get(), static_cast<const std::uint8_t*>(bytes), count);
}

std::string Hash::text() {
    std::array<std::uint8_t, 16> sum{};
    av_murmur3_final(m_hash.get(), sum.data());
    return fmt::format("{:02x}", fmt::join(sum, ""));
}

std::string hashOf(const RawPicture& raw) {
    Hash hash;
    if (raw.frame) {
        addFrame(hash, *raw.frame);
    } else {
        const auto bytes = static_cast<std::size_t>(raw.picture.width * raw.picture.bytesPerPixel());
        for (int y = 0; y < raw.picture.height; y++) {
            hash.add(raw.picture.row(y), bytes);
        }
    }
    return hash.text();
}

std::string identityOf(const std::string& input, bool when) {
    if (isSceneName(input)) {
        return input;
    }
    const std::vector<std::string> files = filesNamed(input);
    if (files.empty()) {
        throw MediaError(fmt::format("There is no '{}'.", input));
    }
    Hash hash;
    hash.add(fmt::format("{};", files.size()));
    const std::size_t count = std::min(files.size(), kMostFiles);
    for (std::size_t i = 0; i < count; i++) {
        addFile(hash, files[count == 1 ? 0 : (files.size() - 1) * i / (count - 1)], when);
    }
    return hash.text();
}

}  // namespace lumiset::media
