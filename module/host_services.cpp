#include "module/host_services.h"

#include "gpu/forced_cpu.h"

namespace lumiset {

HostServices& HostServices::instance() noexcept {
    static HostServices services;
    return services;
}

std::uint32_t HostServices::query(std::uint32_t /*a*/, std::uint32_t /*b*/, std::uint32_t /*c*/) const noexcept {
    return 0;
}

Result HostServices::QueryInterface(const Guid& iid, void** out) noexcept {
    return queryOneInterface<IHostServices>(this, iid, out, kResultNoInterface);
}

HostServices::HostServices() noexcept {
    const std::array<bool, kOptionCount> stored = readOptions();
    for (std::size_t option = 0; option < kOptionCount; ++option) {
        m_values[option] = stored[option];
    }
    setForcedCpu(stored[kForcedCpu]);
}

bool HostServices::set(Option option, bool value) noexcept {
    // Of two threads the later one decides, here and in the store.
    const std::lock_guard<std::mutex> lock(m_setting);
    m_values[option] = value;
    if (option == kForcedCpu) {
        setForcedCpu(value);
    }
    return writeOption(option, value);
}

bool HostServices::GetForcedCpu() noexcept {
    return m_values[kForcedCpu];
}
bool HostServices::SetForcedCpu(bool value) noexcept {
    return set(kForcedCpu, value);
}
bool HostServices::GetKnobsDragVertical() noexcept {
    return m_values[kKnobsDragVertical];
}
bool HostServices::SetKnobsDragVertical(bool value) noexcept {
    return set(kKnobsDragVertical, value);
}
bool HostServices::GetKeyFramesVsPresets() noexcept {
    return m_values[kKeyFramesVsPresets];
}
bool HostServices::SetKeyFramesVsPresets(bool value) noexcept {
    return set(kKeyFramesVsPresets, value);
}
bool HostServices::GetCropOverscan() noexcept {
    return m_values[kCropOverscan];
}
bool HostServices::SetCropOverscan(bool value) noexcept {
    return set(kCropOverscan, value);
}

}  // namespace lumiset
