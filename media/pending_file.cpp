#include "media/pending_file.h"

#include <system_error>

#include <fmt/format.h>

#include "media/media.h"

namespace lumiset::media {

template <class Work>
void PendingFile::attempt(Work work) {
    try {
        work();
    } catch (const std::system_error& error) {
        const std::string reason = error.code() == std::errc::is_a_directory ? "it is a folder" : error.what();
        throw MediaError(fmt::format("Cannot write '{}': {}.", m_finalName, reason));
    }
}

PendingFile::PendingFile(const std::string& finalName) : m_finalName(finalName) {
    attempt([this] { m_file.emplace(m_finalName); });
}

void PendingFile::write(std::string_view bytes) {
    attempt([&] { m_file->write(bytes); });
}

void PendingFile::commit() {
    attempt([this] { m_file->commit(); });
}

}  // namespace lumiset::media
