#include "media/still_details.h"

#include <zlib.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <span>
#include <string_view>

namespace lumiset::media {
namespace {

using Bytes = std::vector<std::uint8_t>;
using View = std::span<const std::uint8_t>;

constexpr std::uint8_t kPngSignature[] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
constexpr std::size_t kPngHeaderEnd = 8 + 25;  // signature and the chunk that comes first
constexpr double kMetersPerInch = 0.0254;

bool startsWith(View bytes, std::string_view text) {
    return bytes.size() >= text.size() && std::memcmp(bytes.data(), text.data(), text.size()) == 0;
}

bool isPng(View file) {
    return file.size() > kPngHeaderEnd && std::equal(std::begin(kPngSignature), std::end(kPngSignature), file.begin());
}

bool isJpeg(View file) {
    return file.size() > 4 && file[0] == 0xFF && file[1] == 0xD8;
}

std::uint32_t bigEndian(View bytes, std::size_t at, int count) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < static_cast<std::size_t>(count); i++) {
        value = value << 8 | bytes[at + i];
    }
    return value;
}

void putBigEndian(Bytes& bytes, std::uint32_t value, int count) {
    for (int i = count - 1; i >= 0; i--) {
        bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
    }
}

// The first directory of a TIFF structure, which Exif is too.
class Directory {
public:
    static constexpr int kOrientation = 0x112;
    static constexpr int kXResolution = 0x11A;
    static constexpr int kResolutionUnit = 0x128;

    explicit Directory(View bytes) : m_bytes(bytes), m_big(startsWith(bytes, "MM")) {
        if (bytes.size() >= 8 && (m_big || startsWith(bytes, "II"))) {
            m_begin = number(4, 4);
        }
    }

    /// Where the value of an entry stands; 0: there is no such entry.
    std::size_t find(unsigned tag) const {
        const std::size_t count = m_begin == 0 || m_begin + 2 > m_bytes.size() ? 0 : number(m_begin, 2);
        for (std::size_t i = 0; i < count; i++) {
            const std::size_t entry = m_begin + 2 + 12 * i;
            if (entry + 12 > m_bytes.size()) {
                break;
            }
            if (number(entry, 2) == tag) {
                return entry + 8;
            }
        }
        return 0;
    }

    std::uint32_t number(std::size_t at, int count) const {
        if (m_big) {
            return bigEndian(m_bytes, at, count);
        }
        std::uint32_t value = 0;
        for (int i = count - 1; i >= 0; i--) {
            value = value << 8 | m_bytes[at + static_cast<std::size_t>(i)];
        }
        return value;
    }

    double dotsPerInch() const {
        const std::size_t place = find(kXResolution);
        const std::size_t at = place == 0 ? 0 : number(place, 4);
        if (at == 0 || at + 8 > m_bytes.size() || number(at + 4, 4) == 0) {
            return 0;
        }
        const double value = static_cast<double>(number(at, 4)) / number(at + 4, 4);
        const std::size_t unit = find(kResolutionUnit);
        const unsigned kind = unit == 0 ? 2 : number(unit, 2);
        return kind == 2 ? value : kind == 3 ? value * 2.54 : 0;
    }

    bool isBig() const { return m_big; }

private:
    View m_bytes;
    bool m_big;
    std::size_t m_begin = 0;
};

// The picture has been turned upright, so that nothing is left to turn.
void clearOrientation(Bytes& exif) {
    const Directory directory(exif);
    if (const std::size_t at = directory.find(Directory::kOrientation); at != 0) {
        exif[at] = directory.isBig() ? 0 : 1;
        exif[at + 1] = directory.isBig() ? 1 : 0;
    }
}

StillDetails readPng(View file) {
    StillDetails details;
    for (std::size_t at = 8; at + 12 <= file.size();) {
        const std::size_t length = bigEndian(file, at, 4);
        if (length > file.size() - at - 12) {
            break;
        }
        const View type = file.subspan(at + 4, 4);
        const View data = file.subspan(at + 8, length);
        if (startsWith(type, "pHYs") && length == 9 && data[8] == 1) {
            details.dotsPerInch = bigEndian(data, 0, 4) * kMetersPerInch;
        } else if (startsWith(type, "eXIf")) {
            details.exif.assign(data.begin(), data.end());
        }
        at += 12 + length;
    }
    return details;
}

StillDetails readJpeg(View file) {
    StillDetails details;
    constexpr std::string_view kExif("Exif\0\0", 6);
    for (std::size_t at = 2; at + 4 <= file.size() && file[at] == 0xFF && file[at + 1] != 0xDA;) {
        const std::size_t length = bigEndian(file, at + 2, 2);
        if (length < 2 || at + 2 + length > file.size()) {
            break;
        }
        const View data = file.subspan(at + 4, length - 2);
        if (file[at + 1] == 0xE0 && startsWith(data, "JFIF") && data.size() >= 12 && data[7] > 0) {
            details.dotsPerInch = bigEndian(data, 8, 2) * (data[7] == 2 ? 2.54 : 1.0);
        } else if (file[at + 1] == 0xE1 && startsWith(data, kExif)) {
            details.exif.assign(data.begin() + 6, data.end());
        }
        at += 2 + length;
    }
    if (details.dotsPerInch == 0) {
        details.dotsPerInch = Directory(details.exif).dotsPerInch();
    }
    return details;
}

void putChunk(Bytes& to, std::string_view type, const Bytes& data) {
    putBigEndian(to, static_cast<std::uint32_t>(data.size()), 4);
    const std::size_t begin = to.size();
    to.insert(to.end(), type.begin(), type.end());
    to.insert(to.end(), data.begin(), data.end());
    const auto crc = crc32(0, to.data() + begin, static_cast<uInt>(to.size() - begin));
    putBigEndian(to, static_cast<std::uint32_t>(crc), 4);
}

Bytes pngChunks(const StillDetails& details, const Bytes& profile) {
    Bytes chunks;
    if (!profile.empty()) {
        constexpr std::string_view kName("ICC\0\0", 5);  // name, its end, the method of compression
        uLongf size = compressBound(static_cast<uLong>(profile.size()));
        Bytes data(kName.begin(), kName.end());
        data.resize(kName.size() + size);
        compress(data.data() + kName.size(), &size, profile.data(), static_cast<uLong>(profile.size()));
        data.resize(kName.size() + size);
        putChunk(chunks, "iCCP", data);
    }
    if (!details.exif.empty()) {
        putChunk(chunks, "eXIf", details.exif);
    }
    return chunks;
}

void putSegment(Bytes& to, std::uint8_t marker, std::string_view name, View data) {
    to.push_back(0xFF);
    to.push_back(marker);
    putBigEndian(to, static_cast<std::uint32_t>(2 + name.size() + data.size()), 2);
    to.insert(to.end(), name.begin(), name.end());
    to.insert(to.end(), data.begin(), data.end());
}

Bytes jpegSegments(const StillDetails& details, const Bytes& profile) {
    constexpr std::size_t kMost = 65000;
    Bytes segments;
    if (details.dotsPerInch > 0) {
        const auto density = static_cast<std::uint32_t>(std::lround(std::min(details.dotsPerInch, 65535.0)));
        Bytes data = {1, 2, 1};
        putBigEndian(data, density, 2);
        putBigEndian(data, density, 2);
        data.insert(data.end(), {0, 0});
        putSegment(segments, 0xE0, std::string_view("JFIF\0", 5), data);
    }
    if (!details.exif.empty() && details.exif.size() < kMost) {
        putSegment(segments, 0xE1, std::string_view("Exif\0\0", 6), details.exif);
    }
    const std::size_t parts = (profile.size() + kMost - 1) / kMost;
    for (std::size_t i = 0; i < parts && parts < 256; i++) {
        const View part = View(profile).subspan(i * kMost, std::min(kMost, profile.size() - i * kMost));
        Bytes data = {static_cast<std::uint8_t>(i + 1), static_cast<std::uint8_t>(parts)};
        data.insert(data.end(), part.begin(), part.end());
        putSegment(segments, 0xE2, std::string_view("ICC_PROFILE\0", 12), data);
    }
    return segments;
}

}  // namespace

StillDetails readStillDetails(const Bytes& file) {
    StillDetails details;
    if (isPng(file)) {
        details = readPng(file);
    } else if (isJpeg(file)) {
        details = readJpeg(file);
    } else {
        details.dotsPerInch = Directory(file).dotsPerInch();
    }
    clearOrientation(details.exif);
    return details;
}

bool addStillDetails(Bytes& file, const StillDetails& details, const Bytes& profile) {
    if (isPng(file)) {
        const Bytes chunks = pngChunks(details, profile);
        file.insert(file.begin() + kPngHeaderEnd, chunks.begin(), chunks.end());
        return true;
    }
    if (!isJpeg(file)) {
        return false;
    }
    const Bytes segments = jpegSegments(details, profile);
    // A density of ours takes the place of the encoder's, which has to come first.
    std::size_t begin = 2;
    if (file[3] == 0xE0 && file.size() > 6) {
        const std::size_t end = 4 + bigEndian(file, 4, 2);
        if (details.dotsPerInch > 0) {
            file.erase(file.begin() + 2, file.begin() + static_cast<std::ptrdiff_t>(end));
        } else {
            begin = end;
        }
    }
    file.insert(file.begin() + static_cast<std::ptrdiff_t>(begin), segments.begin(), segments.end());
    return true;
}

}  // namespace lumiset::media
