#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>

#include "media/av.h"

namespace lumiset::media {

/// Standard input for a demuxer. MP4 and QuickTime files keep the table of their samples at the end as often as not, so
/// what looks like one is kept in a file without a name, in the folder for temporary files, as far as it has been read,
/// and can be entered anywhere. Everything else is passed through once.
class StandardInput {
public:
    /// Throws MediaError where nothing can be read.
    StandardInput();
    StandardInput(const StandardInput&) = delete;
    StandardInput& operator=(const StandardInput&) = delete;
    ~StandardInput();

    AVIOContext* io() const { return m_io; }

private:
    static int readPart(void* self, std::uint8_t* buffer, int size);
    static std::int64_t seek(void* self, std::int64_t offset, int whence);
    int read(std::uint8_t* buffer, int size);
    int readOnly(std::uint8_t* buffer, int size);
    bool keepUntil(std::int64_t end);

    std::uint8_t m_head[12] = {};
    int m_headSize = 0;
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> m_kept{nullptr, std::fclose};
    std::int64_t m_keptBytes = 0;
    std::int64_t m_position = 0;
    bool m_ended = false;
    AVIOContext* m_io = nullptr;
};

}  // namespace lumiset::media
