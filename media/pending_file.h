#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/pending_file.h"

namespace lumiset::media {

/// A platform::PendingFile whose failures are MediaErrors that name the file.
class PendingFile {
public:
    explicit PendingFile(const std::string& finalName);

    [[nodiscard]] const std::string& path() const { return m_file->path(); }
    void write(std::string_view bytes);
    void commit();

private:
    template <class Work>
    void attempt(Work work);

    std::string m_finalName;
    std::optional<platform::PendingFile> m_file;
};

}  // namespace lumiset::media
