#include "media/tiff_directory.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "media/still_bytes.h"

namespace lumiset::media {
namespace {

constexpr std::uint32_t kFirstDirectory = 8;  // in what is written here
// Entries may overlap, so that a small file could claim any amount of values.
constexpr std::size_t kMostBytes = std::size_t{16} << 20U;
constexpr int kDeepest = 3;

// Bytes of a value by its type, and of the numbers that it is made of, whose order differs between machines.
struct Size {
    std::uint8_t value, number;
};
constexpr Size kSizes[] = {{0, 1}, {1, 1}, {1, 1}, {2, 2}, {4, 4}, {8, 4}, {1, 1},
                           {1, 1}, {2, 2}, {4, 4}, {8, 4}, {4, 4}, {8, 8}, {4, 4}};

Size sizeOf(std::uint32_t type) {
    return type < std::size(kSizes) ? kSizes[type] : kSizes[0];
}

bool pointsToDirectory(std::uint32_t tag) {
    constexpr std::uint32_t kExif = 0x8769;
    constexpr std::uint32_t kGps = 0x8825;
    constexpr std::uint32_t kInteroperability = 0xA005;
    return tag == kExif || tag == kGps || tag == kInteroperability;
}

class Reader {
public:
    explicit Reader(ByteView bytes) : m_bytes(bytes) {
        const bool little = bytes.size() >= 8 && bytes[0] == 'I' && bytes[1] == 'I';
        m_big = bytes.size() >= 8 && bytes[0] == 'M' && bytes[1] == 'M';
        m_first = (little || m_big) && number(2, 2) == 42 ? number(4, 4) : 0;
    }

    std::vector<TiffEntry> directory() { return m_first == 0 ? std::vector<TiffEntry>() : directory(m_first, 0); }

private:
    std::uint32_t number(std::size_t at, std::size_t count) const {
        return m_big ? bigEndian(m_bytes, at, count) : littleEndian(m_bytes, at, count);
    }

    std::vector<TiffEntry> directory(std::size_t begin, int depth) {
        std::vector<TiffEntry> entries;
        const std::size_t count = begin + 2 > m_bytes.size() ? 0 : number(begin, 2);
        for (std::size_t at = begin + 2; at < begin + 2 + 12 * count && at + 12 <= m_bytes.size(); at += 12) {
            TiffEntry entry{static_cast<std::uint16_t>(number(at, 2)), static_cast<std::uint16_t>(number(at + 2, 2)),
                            number(at + 4, 4)};
            const Size size = sizeOf(entry.type);
            const std::uint64_t length = std::uint64_t{size.value} * entry.count;
            const std::size_t place = length <= 4 ? at + 8 : number(at + 8, 4);
            if (length == 0 || length > m_bytes.size() || place > m_bytes.size() - length) {
                continue;
            }
            m_taken += length;
            if (pointsToDirectory(entry.tag)) {
                entry.below = depth < kDeepest ? directory(number(at + 8, 4), depth + 1) : std::vector<TiffEntry>();
            } else if (m_taken < kMostBytes) {
                entry.value.assign(m_bytes.begin() + static_cast<std::ptrdiff_t>(place),
                                   m_bytes.begin() + static_cast<std::ptrdiff_t>(place + length));
                for (std::size_t i = 0; m_big && i + size.number <= length; i += size.number) {
                    std::reverse(entry.value.begin() + static_cast<std::ptrdiff_t>(i),
                                 entry.value.begin() + static_cast<std::ptrdiff_t>(i + size.number));
                }
            }
            if (!entry.value.empty() || !entry.below.empty()) {
                entries.push_back(std::move(entry));
            }
        }
        return entries;
    }

    ByteView m_bytes;
    bool m_big = false;
    std::size_t m_first = 0;
    std::uint64_t m_taken = 0;
};

void put(Bytes& bytes, std::size_t at, std::uint32_t value, std::size_t count) {
    for (std::size_t i = 0; i < count; i++) {
        bytes[at + i] = static_cast<std::uint8_t>(value >> (8 * i));
    }
}

// Appends a directory with all that it points to; gives back where it begins.
std::uint32_t append(Bytes& bytes, std::vector<TiffEntry> entries) {
    constexpr std::uint16_t kLong = 4;
    std::stable_sort(entries.begin(), entries.end(),
                     [](const TiffEntry& a, const TiffEntry& b) { return a.tag < b.tag; });
    bytes.resize(bytes.size() + bytes.size() % 2);
    const std::size_t begin = bytes.size();
    bytes.resize(begin + 2 + 12 * entries.size() + 4);  // the last four: no directory follows
    put(bytes, begin, static_cast<std::uint32_t>(entries.size()), 2);
    std::size_t at = begin + 2;
    for (TiffEntry& entry : entries) {
        const bool pointer = pointsToDirectory(entry.tag);
        put(bytes, at, entry.tag, 2);
        put(bytes, at + 2, pointer ? kLong : entry.type, 2);
        put(bytes, at + 4, pointer ? 1 : entry.count, 4);
        if (pointer) {
            put(bytes, at + 8, append(bytes, std::move(entry.below)), 4);
        } else if (entry.value.size() <= 4) {
            std::copy(entry.value.begin(), entry.value.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at + 8));
        } else {
            bytes.resize(bytes.size() + bytes.size() % 2);
            put(bytes, at + 8, static_cast<std::uint32_t>(bytes.size()), 4);
            bytes.insert(bytes.end(), entry.value.begin(), entry.value.end());
        }
        at += 12;
    }
    return static_cast<std::uint32_t>(begin);
}

}  // namespace

std::vector<TiffEntry> readTiff(ByteView bytes) {
    return Reader(bytes).directory();
}

double tiffNumber(const std::vector<TiffEntry>& entries, std::uint16_t tag) {
    for (const TiffEntry& entry : entries) {
        if (entry.tag == tag && !entry.value.empty()) {
            const Size size = sizeOf(entry.type);
            const double first = littleEndian(entry.value, 0, std::min<std::size_t>(size.number, 4));
            const bool fraction = size.value == 8 && size.number == 4;
            const double under = fraction ? littleEndian(entry.value, 4, 4) : 1;
            return under == 0 ? 0 : first / under;
        }
    }
    return 0;
}

std::vector<TiffEntry> describingEntries(std::vector<TiffEntry> entries) {
    // Document, description, maker, model; program, time; artist, host; ratings, copyright, the directories and what
    // else is no part of the format itself, save texts in formats of their own.
    const auto describes = [](std::uint16_t tag) {
        constexpr std::uint16_t kNews = 0x83BB;
        constexpr std::uint16_t kEditor = 0x8649;
        return (tag >= 0x10D && tag <= 0x110) || tag == 0x131 || tag == 0x132 || tag == 0x13B || tag == 0x13C ||
               (tag >= 0x4000 && tag != kNews && tag != kEditor && tag != kTiffColorProfile);
    };
    std::erase_if(entries, [&](const TiffEntry& entry) { return !describes(entry.tag); });
    return entries;
}

Bytes writeTiff(std::vector<TiffEntry> entries) {
    if (entries.empty()) {
        return {};
    }
    Bytes bytes = {'I', 'I', 42, 0, kFirstDirectory, 0, 0, 0};
    append(bytes, std::move(entries));
    return bytes;
}

bool addToTiff(Bytes& file, const std::vector<TiffEntry>& entries) {
    std::vector<TiffEntry> all = readTiff(file);
    if (all.empty() || file[0] != 'I') {
        return false;
    }
    std::copy_if(entries.begin(), entries.end(), std::back_inserter(all), [&](const TiffEntry& entry) {
        return std::none_of(all.begin(), all.end(), [&](const TiffEntry& has) { return has.tag == entry.tag; });
    });
    const std::uint32_t begin = append(file, std::move(all));
    put(file, 4, begin, 4);
    return true;
}

}  // namespace lumiset::media
