#include "adapters/openfx/host_slot.h"

#include <array>

namespace lumiset::openfx {

void HostSlot::set(const Host* host) {
    const std::lock_guard lock(m_mutex);
    m_host = host;
}

void HostSlot::load() {
    const std::lock_guard lock(m_mutex);
    if (m_host == nullptr) {
        throw HostError("The host has not told what it offers.");
    }
    m_info = std::make_shared<const HostInfo>(*m_host);
}

std::shared_ptr<const HostInfo> HostSlot::info() const {
    const std::lock_guard lock(m_mutex);
    if (m_info == nullptr) {
        throw HostError("The host uses a plug-in that it has not loaded.");
    }
    return m_info;
}

HostSlot& slotOf(std::size_t plugin) {
    static auto& slots = *new std::array<HostSlot, kMostPlugins>;
    return slots[plugin];
}

}  // namespace lumiset::openfx
