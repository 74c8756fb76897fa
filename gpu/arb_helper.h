#pragma once

#include "host/arb_table.h"

namespace lumiset {

/// The extension entry points that an effect renders with: copied from the host, or loaded from the current
/// context where the host has none. A record of 664 bytes in the 32-bit build.
class ARBHelper : public ARBTable {
public:
    ARBHelper() noexcept : ARBTable{} {}

    /// Fills the record from the current context; `flags` is not used. At once true when it has entries.
    /// False when an extension is missing without which nothing can be rendered.
    bool Load(std::uint32_t flags) noexcept;
    /// True when the current context's extension string has `name` as a word.
    [[nodiscard]] bool IsExtensionSupported(const char* name) const noexcept;
};
static_assert(sizeof(ARBHelper) == sizeof(ARBTable));

}  // namespace lumiset
