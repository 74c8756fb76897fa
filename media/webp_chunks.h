#pragma once

#include "media/still_bytes.h"

namespace lumiset::media {

/// The contents of a WebP file's first chunk of a kind, "EXIF" or "ICCP"; empty without one and for other files.
ByteView webpChunk(ByteView file, std::string_view kind);

/// Puts Exif data and a colour profile, either may be empty, into a WebP file of one picture that has none. False, the
/// file unchanged, for other files.
bool addToWebp(Bytes& file, ByteView exif, ByteView profile);

}  // namespace lumiset::media
