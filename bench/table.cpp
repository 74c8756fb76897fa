#include "bench/table.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <cstdio>
#include <span>

namespace lumiset::bench {

void Table::print(const Row& row) {
    if (m_markdown) {
        fmt::print("| {} |\n", fmt::join(row, " | "));
        if (!m_begun) {
            fmt::print("|---|{}\n", fmt::join(Row(row.size() - 1, "---:|"), ""));
        }
    } else {
        fmt::print("{:<50}", row.front());
        for (const std::string& cell : std::span(row).subspan(1)) {
            fmt::print("{:>12}", cell);
        }
        fmt::print("\n");
    }
    m_begun = true;
    std::fflush(stdout);  // a table may take minutes
}

}  // namespace lumiset::bench
