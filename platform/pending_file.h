#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace lumiset::platform {

/// A file that stands under a hidden name of its own, in the folder of the one that it is to replace, until it is
/// complete. Whatever stood under the final name is untouched until then, and keeps its permissions afterwards; a link
/// stays a link, and the file that it leads to is replaced. Destroyed before `commit` it removes itself.
///
/// The hidden name cannot be guessed, and nothing that stands there already is opened or followed. What processes that
/// were killed have left in the folder is removed: a file that a running process still writes is locked by it.
///
/// All operations throw std::system_error, whose `what()` is the reason alone.
class PendingFile {
public:
    /// Follows `target`. Pipes and devices are written to as they are.
    explicit PendingFile(const std::filesystem::path& target);
    PendingFile(const PendingFile&) = delete;
    PendingFile& operator=(const PendingFile&) = delete;
    ~PendingFile();

    /// UTF-8. Where a library that opens files by itself may write.
    [[nodiscard]] const std::string& path() const;
    void write(std::string_view bytes);
    /// Puts the file in its place when all of it is on the disk.
    void commit();

    /// Removes all of this process's pending files, which is about to end. A signal handler may call it.
    static void removeAll() noexcept;

private:
    struct State;
    std::unique_ptr<State> m_state;
};

}  // namespace lumiset::platform
