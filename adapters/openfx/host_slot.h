#pragma once

#include <cstddef>
#include <memory>
#include <mutex>

#include "adapters/openfx/host.h"

namespace lumiset::openfx {

/// More than the module has effects. An entry point carries no word of whose it is, so each plug-in has its own.
inline constexpr std::size_t kMostPlugins = 32;

/// What the host has handed to one plug-in. Hosts load from several threads.
class HostSlot {
public:
    void set(const Host* host);
    /// Reads anew what the host offers. Throws `HostError`.
    void load();
    /// Throws `HostError` before the plug-in is loaded.
    [[nodiscard]] std::shared_ptr<const HostInfo> info() const;

private:
    mutable std::mutex m_mutex;
    const Host* m_host = nullptr;
    std::shared_ptr<const HostInfo> m_info;
};

/// The slot of the plug-in with that number. It is left to the end of the program: threads may still be in it.
HostSlot& slotOf(std::size_t plugin);

}  // namespace lumiset::openfx
