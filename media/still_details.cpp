#include "media/still_details.h"

#include <zlib.h>

#include <algorithm>
#include <cmath>

#include "media/still_bytes.h"
#include "media/tiff_directory.h"
#include "media/webp_chunks.h"

namespace lumiset::media {
namespace {

constexpr std::uint8_t kPngSignature[] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
constexpr std::size_t kPngHeaderEnd = 8 + 25;  // signature and the chunk that comes first
constexpr double kMetersPerInch = 0.0254;
constexpr std::size_t kSegment = 65000;  // as much as a segment of JPEG takes, and a little less

bool isPng(ByteView file) {
    return file.size() > kPngHeaderEnd && std::equal(std::begin(kPngSignature), std::end(kPngSignature), file.begin());
}

bool isWebp(ByteView file) {
    return file.size() > 12 && startsWith(file, "RIFF") && startsWith(file.subspan(8), "WEBP");
}

bool isJpeg(ByteView file) {
    return file.size() > 4 && file[0] == 0xFF && file[1] == 0xD8;
}

double dotsPerInchOf(const std::vector<TiffEntry>& entries) {
    constexpr double kInches = 2;
    constexpr double kCentimeters = 3;
    const double unit = tiffNumber(entries, kTiffResolutionUnit);
    const double value = tiffNumber(entries, kTiffXResolution);
    return unit == kInches || unit == 0 ? value : unit == kCentimeters ? value * 2.54 : 0;
}

// The picture has been turned upright, so that nothing is left to turn, and a small picture that is kept beside it
// would show it as it was.
void settle(Bytes& exif) {
    const auto number = [&](std::size_t at, std::size_t count) {
        return exif[0] == 'M' ? bigEndian(exif, at, count) : littleEndian(exif, at, count);
    };
    if (readTiff(exif).empty()) {
        return;
    }
    const std::size_t begin = number(4, 4);
    const std::size_t end = begin + 2 + std::size_t{12} * number(begin, 2);
    for (std::size_t at = begin + 2; at < end && at + 12 <= exif.size(); at += 12) {
        if (number(at, 2) == kTiffOrientation) {
            exif[at + 8] = exif[0] == 'M' ? 0 : 1;
            exif[at + 9] = exif[0] == 'M' ? 1 : 0;
        }
    }
    if (end + 4 <= exif.size()) {
        std::fill_n(exif.begin() + static_cast<std::ptrdiff_t>(end), 4, std::uint8_t{0});
    }
}

StillDetails readPng(ByteView file) {
    StillDetails details;
    for (std::size_t at = 8; at + 12 <= file.size();) {
        const std::size_t length = bigEndian(file, at, 4);
        if (length > file.size() - at - 12) {
            break;
        }
        const ByteView type = file.subspan(at + 4, 4);
        const ByteView data = file.subspan(at + 8, length);
        if (startsWith(type, "pHYs") && length == 9 && data[8] == 1) {
            details.dotsPerInch = bigEndian(data, 0, 4) * kMetersPerInch;
        } else if (startsWith(type, "eXIf")) {
            details.exif.assign(data.begin(), data.end());
        }
        at += 12 + length;
    }
    return details;
}

StillDetails readJpeg(ByteView file) {
    StillDetails details;
    constexpr std::string_view kExif("Exif\0\0", 6);
    for (std::size_t at = 2; at + 4 <= file.size() && file[at] == 0xFF && file[at + 1] != 0xDA;) {
        const std::size_t length = bigEndian(file, at + 2, 2);
        if (length < 2 || at + 2 + length > file.size()) {
            break;
        }
        const ByteView data = file.subspan(at + 4, length - 2);
        if (file[at + 1] == 0xE0 && startsWith(data, "JFIF") && data.size() >= 12 && data[7] > 0) {
            details.dotsPerInch = bigEndian(data, 8, 2) * (data[7] == 2 ? 2.54 : 1.0);
        } else if (file[at + 1] == 0xE1 && startsWith(data, kExif)) {
            details.exif.assign(data.begin() + 6, data.end());
        }
        at += 2 + length;
    }
    if (details.dotsPerInch == 0) {
        details.dotsPerInch = dotsPerInchOf(readTiff(details.exif));
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

void putSegment(Bytes& to, std::uint8_t marker, std::string_view name, ByteView data) {
    to.push_back(0xFF);
    to.push_back(marker);
    putBigEndian(to, static_cast<std::uint32_t>(2 + name.size() + data.size()), 2);
    to.insert(to.end(), name.begin(), name.end());
    to.insert(to.end(), data.begin(), data.end());
}

Bytes jpegSegments(const StillDetails& details, const Bytes& profile) {
    Bytes segments;
    if (details.dotsPerInch > 0) {
        const auto density = static_cast<std::uint32_t>(std::lround(std::min(details.dotsPerInch, 65535.0)));
        Bytes data = {1, 2, 1};
        putBigEndian(data, density, 2);
        putBigEndian(data, density, 2);
        data.insert(data.end(), {0, 0});
        putSegment(segments, 0xE0, std::string_view("JFIF\0", 5), data);
    }
    if (!details.exif.empty()) {
        putSegment(segments, 0xE1, std::string_view("Exif\0\0", 6), details.exif);
    }
    const std::size_t parts = (profile.size() + kSegment - 1) / kSegment;
    for (std::size_t i = 0; i < parts; i++) {
        const ByteView part =
            ByteView(profile).subspan(i * kSegment, std::min(kSegment, profile.size() - i * kSegment));
        Bytes data = {static_cast<std::uint8_t>(i + 1), static_cast<std::uint8_t>(parts)};
        data.insert(data.end(), part.begin(), part.end());
        putSegment(segments, 0xE2, std::string_view("ICC_PROFILE\0", 12), data);
    }
    return segments;
}

StillDetails readWebp(ByteView file) {
    constexpr std::string_view kExif("Exif\0\0", 6);  // which some programs put there too
    StillDetails details;
    ByteView exif = webpChunk(file, "EXIF");
    exif = exif.subspan(startsWith(exif, kExif) ? kExif.size() : 0);
    details.exif.assign(exif.begin(), exif.end());
    details.dotsPerInch = dotsPerInchOf(readTiff(details.exif));
    return details;
}

StillDetails readTiffFile(ByteView file) {
    const std::vector<TiffEntry> entries = readTiff(file);
    return {writeTiff(describingEntries(entries)), dotsPerInchOf(entries)};
}

void addToPng(Bytes& file, const StillDetails& details, const Bytes& profile) {
    const Bytes chunks = pngChunks(details, profile);
    file.insert(file.begin() + kPngHeaderEnd, chunks.begin(), chunks.end());
}

void addToJpeg(Bytes& file, const StillDetails& details, const Bytes& profile) {
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
}

}  // namespace

StillDetails readStillDetails(const Bytes& file) {
    StillDetails details = isPng(file)    ? readPng(file)
                           : isJpeg(file) ? readJpeg(file)
                           : isWebp(file) ? readWebp(file)
                                          : readTiffFile(file);
    settle(details.exif);
    return details;
}

KeptDetails addStillDetails(Bytes& file, const StillDetails& details, const Bytes& profile) {
    if (isPng(file)) {
        addToPng(file, details, profile);
        return {true, true, true};
    }
    if (isJpeg(file)) {
        constexpr std::size_t kMostSegments = 255;
        const bool exifFits = details.exif.size() < kSegment;
        const bool profileFits = profile.size() < kSegment * kMostSegments;
        addToJpeg(file, {exifFits ? details.exif : Bytes(), details.dotsPerInch}, profileFits ? profile : Bytes());
        return {exifFits, profileFits, true};
    }
    if (details.exif.empty() && profile.empty()) {
        return {false, false, !isWebp(file) && !readTiff(file).empty()};
    }
    if (isWebp(file)) {
        const bool added = addToWebp(file, details.exif, profile);
        return {added, added, tiffNumber(readTiff(details.exif), kTiffXResolution) > 0};
    }
    std::vector<TiffEntry> entries = describingEntries(readTiff(details.exif));
    if (!profile.empty()) {
        constexpr std::uint16_t kUndefined = 7;
        entries.push_back({kTiffColorProfile, kUndefined, static_cast<std::uint32_t>(profile.size()), profile});
    }
    const bool added = addToTiff(file, entries);
    return {added, added, added};
}

}  // namespace lumiset::media
