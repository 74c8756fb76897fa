#pragma once

#include <functional>
#include <string>
#include <vector>

#include "media/part_file.h"

namespace lumiset::media {

struct JoinRequest {
    std::string output;
    std::vector<std::string> parts;  ///< in any order
    std::string input;               ///< where the film is that they were made of; empty: where it was
};

/// Puts the parts of a film together without encoding again: the stream that one run would have written, with what goes
/// with the pictures taken from the film itself. Sequences of pictures are there already and are only looked at.
class Join {
public:
    /// Reads what the parts tell of themselves. Throws MediaError for parts that are missing, there twice, unfinished
    /// or damaged, and for those that do not fit together or to the film, naming them.
    explicit Join(const JoinRequest& request);

    [[nodiscard]] std::int64_t pictures() const { return m_pictures; }
    /// False for a sequence of pictures, of which nothing is written.
    [[nodiscard]] bool isFile() const;
    [[nodiscard]] const std::string& input() const { return m_input; }
    /// Writes the output, calling `progress` with the pictures written; false from it ends that, and nothing is left.
    /// Throws MediaError.
    bool write(const std::function<bool(std::int64_t)>& progress);
    /// What the user should know, complete after `write`.
    [[nodiscard]] const std::vector<std::string>& notes() const { return m_notes; }

private:
    void putInOrder(const std::vector<std::string>& files);
    void compareParts() const;
    void compareInput() const;
    void checkPictures() const;
    [[nodiscard]] std::vector<std::int64_t> decodingTimes() const;

    JoinRequest m_request;
    std::vector<PartReader> m_parts;  ///< in order
    std::string m_input;
    std::int64_t m_pictures = 0;
    std::vector<std::string> m_notes;
};

}  // namespace lumiset::media
