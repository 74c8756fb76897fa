#pragma once

#include <string>
#include <vector>

namespace lumiset::bench {

using Row = std::vector<std::string>;

/// Prints rows as they come, the first one as titles: in columns, or in Markdown.
class Table {
public:
    explicit Table(bool markdown) : m_markdown(markdown) {}

    void print(const Row& row);

private:
    bool m_markdown;
    bool m_begun = false;
};

}  // namespace lumiset::bench
