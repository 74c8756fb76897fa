#include "media/pending_file.h"

#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <filesystem>
#include <system_error>

#include <fmt/format.h>

#include "media/media.h"

namespace fs = std::filesystem;

namespace lumiset::media {
namespace {

std::string nextTemporaryName(const fs::path& target) {
    static std::atomic<unsigned> counter{0};
    return fmt::format(".lumiset-{}-{}{}", getpid(), counter++, target.extension().string());
}

[[noreturn]] void failToWrite(const std::string& name, const std::string& reason) {
    throw MediaError(fmt::format("Cannot write '{}': {}.", name, reason));
}

}  // namespace

PendingFile::PendingFile(const std::string& finalName) : m_finalName(finalName), m_target(finalName) {
    std::error_code error;
    const fs::file_status status = fs::status(finalName, error);
    if (fs::is_directory(status)) {
        failToWrite(finalName, "it is a folder");
    }
    if (fs::exists(status)) {
        if (access(finalName.c_str(), W_OK) != 0) {
            failToWrite(finalName, std::generic_category().message(errno));
        }
        if (!fs::is_regular_file(status)) {
            m_direct = true;
            m_path = finalName;
            return;
        }
        // A link stays a link; the file that it leads to is replaced.
        m_target = fs::canonical(finalName, error).string();
    }
    const fs::path target(m_target);
    const fs::path folder = target.has_parent_path() ? target.parent_path() : fs::path(".");
    if (access(folder.c_str(), W_OK | X_OK) != 0) {
        failToWrite(finalName, fmt::format("folder '{}': {}", folder.string(), std::generic_category().message(errno)));
    }
    m_path = (folder / nextTemporaryName(target)).string();
}

PendingFile::~PendingFile() {
    if (!m_committed && !m_direct) {
        unlink(m_path.c_str());
    }
}

void PendingFile::commit() {
    if (!m_direct) {
        std::error_code error;
        fs::rename(m_path, m_target, error);
        if (error) {
            failToWrite(m_finalName, error.message());
        }
    }
    m_committed = true;
}

}  // namespace lumiset::media
