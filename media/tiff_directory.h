#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace lumiset::media {

/// What a directory of a TIFF structure says under a tag. Exif is such a structure as well.
struct TiffEntry {
    std::uint16_t tag = 0;
    std::uint16_t type = 0;
    std::uint32_t count = 0;
    std::vector<std::uint8_t> value{};  ///< little-endian; of a tag that points to a directory nothing
    std::vector<TiffEntry> below{};     ///< that directory
};

inline constexpr std::uint16_t kTiffOrientation = 0x112;
inline constexpr std::uint16_t kTiffXResolution = 0x11A;
inline constexpr std::uint16_t kTiffResolutionUnit = 0x128;
inline constexpr std::uint16_t kTiffColorProfile = 0x8773;

/// The first directory, in either order of bytes, with Exif, GPS and interoperability directories below it; nothing for
/// bytes that are no TIFF structure. Entries that point outside of it are left out.
std::vector<TiffEntry> readTiff(std::span<const std::uint8_t> bytes);

/// The first value under a tag, a fraction as its quotient; 0 where there is none.
double tiffNumber(const std::vector<TiffEntry>& entries, std::uint16_t tag);

/// Entries that speak of the camera and the moment, not of how the file keeps its samples.
std::vector<TiffEntry> describingEntries(std::vector<TiffEntry> entries);

/// A structure of these entries alone, as Exif segments hold it; empty for none.
std::vector<std::uint8_t> writeTiff(std::vector<TiffEntry> entries);

/// Adds entries to the first directory of a little-endian TIFF file, which keeps those it has. False, the file
/// unchanged, for other files.
bool addToTiff(std::vector<std::uint8_t>& file, const std::vector<TiffEntry>& entries);

}  // namespace lumiset::media
