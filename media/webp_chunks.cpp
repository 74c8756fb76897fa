// A WebP file is a RIFF of chunks. One that holds more than the picture begins with a chunk that tells what comes.

#include "media/webp_chunks.h"

#include <algorithm>

namespace lumiset::media {
namespace {

constexpr std::size_t kHeaderEnd = 12;

bool isWebp(ByteView file) {
    return file.size() >= kHeaderEnd && startsWith(file, "RIFF") && startsWith(file.subspan(8), "WEBP");
}

// Calls `take(kind, contents)` for every whole chunk.
template <class Take>
void forChunks(ByteView file, Take take) {
    for (std::size_t at = kHeaderEnd; isWebp(file) && at + 8 <= file.size();) {
        const std::size_t size = littleEndian(file, at + 4, 4);
        if (size > file.size() - at - 8) {
            return;
        }
        take(std::string_view(reinterpret_cast<const char*>(file.data()) + at, 4), file.subspan(at + 8, size));
        at += 8 + size + size % 2;
    }
}

struct Canvas {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    bool alpha = false;
};

Canvas canvasOf(ByteView file) {
    constexpr std::uint32_t kSide = 0x3FFF;
    Canvas canvas;
    forChunks(file, [&](std::string_view kind, ByteView contents) {
        if (kind == "VP8X" && contents.size() >= 10) {
            canvas = {littleEndian(contents, 4, 3) + 1, littleEndian(contents, 7, 3) + 1, (contents[0] & 0x10U) != 0};
        } else if (canvas.width == 0 && kind == "VP8 " && contents.size() >= 10) {
            canvas = {littleEndian(contents, 6, 2) & kSide, littleEndian(contents, 8, 2) & kSide};
        } else if (canvas.width == 0 && kind == "VP8L" && contents.size() >= 5) {
            const std::uint32_t bits = littleEndian(contents, 1, 4);
            canvas = {(bits & kSide) + 1, (bits >> 14U & kSide) + 1, (bits >> 28U & 1U) != 0};
        }
    });
    return canvas;
}

void putChunk(Bytes& to, std::string_view kind, ByteView contents) {
    to.insert(to.end(), kind.begin(), kind.end());
    putLittleEndian(to, static_cast<std::uint32_t>(contents.size()), 4);
    to.insert(to.end(), contents.begin(), contents.end());
    to.resize(to.size() + contents.size() % 2);
}

}  // namespace

ByteView webpChunk(ByteView file, std::string_view kind) {
    ByteView found;
    forChunks(file, [&](std::string_view each, ByteView contents) {
        if (found.empty() && each == kind) {
            found = contents;
        }
    });
    return found;
}

bool addToWebp(Bytes& file, ByteView exif, ByteView profile) {
    const Canvas canvas = canvasOf(file);
    if (canvas.width == 0) {
        return false;
    }
    const unsigned flags = (profile.empty() ? 0U : 0x20U) | (canvas.alpha ? 0x10U : 0U) | (exif.empty() ? 0U : 0x08U);
    Bytes header;
    putLittleEndian(header, flags, 4);
    putLittleEndian(header, canvas.width - 1, 3);
    putLittleEndian(header, canvas.height - 1, 3);
    Bytes chunks;
    putChunk(chunks, "VP8X", header);
    if (!profile.empty()) {
        putChunk(chunks, "ICCP", profile);
    }
    forChunks(file, [&](std::string_view kind, ByteView contents) {
        if (kind != "VP8X") {
            putChunk(chunks, kind, contents);
        }
    });
    if (!exif.empty()) {
        putChunk(chunks, "EXIF", exif);
    }
    file = {'R', 'I', 'F', 'F'};
    putLittleEndian(file, static_cast<std::uint32_t>(4 + chunks.size()), 4);
    file.insert(file.end(), {'W', 'E', 'B', 'P'});
    file.insert(file.end(), chunks.begin(), chunks.end());
    return true;
}

}  // namespace lumiset::media
