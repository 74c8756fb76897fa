#include "media/standard_input.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <system_error>

#include <fmt/format.h>

#include "platform/standard_streams.h"

namespace lumiset::media {
namespace {

constexpr int kBufferBytes = 1 << 16;

/// ISO base media files begin with the box "ftyp", old QuickTime ones with one of the others.
bool beginsLikeMp4(const std::uint8_t* head, int size) {
    constexpr std::array<const char*, 5> kBoxes{"ftyp", "moov", "mdat", "wide", "free"};
    return size >= 8 && std::any_of(kBoxes.begin(), kBoxes.end(),
                                    [&](const char* box) { return std::memcmp(head + 4, box, 4) == 0; });
}

}  // namespace

StandardInput::StandardInput() {
    int count = 1;
    while (m_headSize < static_cast<int>(sizeof m_head) && count > 0) {
        count = platform::readInput(m_head + m_headSize, static_cast<int>(sizeof m_head) - m_headSize);
        m_headSize += std::max(count, 0);
    }
    avCheck(std::min(count, 0), "Cannot read standard input");
    const bool keeps = beginsLikeMp4(m_head, m_headSize);
    if (keeps) {
        m_kept.reset(platform::openTemporaryFile());
        if (m_kept == nullptr || std::fwrite(m_head, 1, sizeof m_head, m_kept.get()) != sizeof m_head) {
            throw MediaError(fmt::format("Standard input cannot be kept in a temporary file: {}.",
                                         std::generic_category().message(errno)));
        }
        m_keptBytes = m_headSize;
    }
    auto* buffer = static_cast<unsigned char*>(allocated(av_malloc(kBufferBytes)));
    m_io = avio_alloc_context(buffer, kBufferBytes, 0, this, &readPart, nullptr, keeps ? &seek : nullptr);
    if (m_io == nullptr) {
        av_free(buffer);
        throw std::bad_alloc();
    }
}

StandardInput::~StandardInput() {
    av_freep(&m_io->buffer);
    avio_context_free(&m_io);
}

int StandardInput::readPart(void* self, std::uint8_t* buffer, int size) {
    auto& input = *static_cast<StandardInput*>(self);
    const int count = input.m_kept != nullptr ? input.read(buffer, size) : input.readOnly(buffer, size);
    return count == 0 ? AVERROR_EOF : count;
}

int StandardInput::readOnly(std::uint8_t* buffer, int size) {
    if (m_position < m_headSize) {
        const int count = std::min(size, m_headSize - static_cast<int>(m_position));
        std::memcpy(buffer, m_head + m_position, static_cast<std::size_t>(count));
        m_position += count;
        return count;
    }
    return platform::readInput(buffer, size);
}

int StandardInput::read(std::uint8_t* buffer, int size) {
    if (!keepUntil(m_position + size)) {
        return AVERROR(EIO);
    }
    if (!platform::seekTo(m_kept.get(), m_position, SEEK_SET)) {
        return AVERROR(errno);
    }
    const std::size_t count = std::fread(buffer, 1, static_cast<std::size_t>(size), m_kept.get());
    m_position += static_cast<std::int64_t>(count);
    return std::ferror(m_kept.get()) != 0 ? AVERROR(EIO) : static_cast<int>(count);
}

/// Reads on until that many bytes are kept, or all that there are.
bool StandardInput::keepUntil(std::int64_t end) {
    std::array<std::uint8_t, kBufferBytes> part{};
    if (m_keptBytes < end && !m_ended && !platform::seekTo(m_kept.get(), 0, SEEK_END)) {
        return false;
    }
    while (m_keptBytes < end && !m_ended) {
        const int count = platform::readInput(part.data(), kBufferBytes);
        if (count < 0 || std::fwrite(part.data(), 1, static_cast<std::size_t>(count), m_kept.get()) !=
                             static_cast<std::size_t>(count)) {
            return false;
        }
        m_keptBytes += count;
        m_ended = count == 0;
    }
    return true;
}

std::int64_t StandardInput::seek(void* self, std::int64_t offset, int whence) {
    auto& input = *static_cast<StandardInput*>(self);
    if (whence == AVSEEK_SIZE) {
        return input.keepUntil(INT64_MAX) ? input.m_keptBytes : AVERROR(EIO);
    }
    if (whence != SEEK_SET || offset < 0) {  // all that FFmpeg asks for besides
        return AVERROR(EINVAL);
    }
    return input.m_position = offset;
}

}  // namespace lumiset::media
