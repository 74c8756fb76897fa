#pragma once

#include <string>

namespace lumiset::media {

/// A file that stands under a name of its own in the folder of the final one until it is complete. Destroyed before
/// `commit` it removes itself; what stood under the final name stays untouched until then.
class PendingFile {
public:
    /// Throws MediaError when nothing can be written at this place.
    explicit PendingFile(const std::string& finalName);
    PendingFile(const PendingFile&) = delete;
    PendingFile& operator=(const PendingFile&) = delete;
    ~PendingFile();

    /// Where to write; has the final name's extension.
    const std::string& path() const { return m_path; }
    void commit();

private:
    std::string m_finalName;
    std::string m_target;  ///< the final name with links followed
    std::string m_path;
    bool m_direct = false;  ///< pipes and devices are written to as they are
    bool m_committed = false;
};

}  // namespace lumiset::media
