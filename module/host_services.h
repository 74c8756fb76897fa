#pragma once

#include <array>
#include <atomic>
#include <mutex>

#include "host/host_services.h"
#include "host/reference_count.h"
#include "support/option_store.h"

namespace lumiset {

/// The process-wide options. One object, alive until the process ends, whatever its reference count says.
class HostServices final : public Counted<IHostServices> {
public:
    static HostServices& instance() noexcept;

    /// What `IEffectLibrary::LibraryQuery` forwards to; nothing hangs on the answer.
    [[nodiscard]] std::uint32_t query(std::uint32_t a, std::uint32_t b, std::uint32_t c) const noexcept;

    Result LUMISET_CALL QueryInterface(const Guid& iid, void** out) noexcept override;

    bool LUMISET_CALL GetForcedCpu() noexcept override;
    bool LUMISET_CALL SetForcedCpu(bool value) noexcept override;
    bool LUMISET_CALL GetKnobsDragVertical() noexcept override;
    bool LUMISET_CALL SetKnobsDragVertical(bool value) noexcept override;
    bool LUMISET_CALL GetKeyFramesVsPresets() noexcept override;
    bool LUMISET_CALL SetKeyFramesVsPresets(bool value) noexcept override;
    bool LUMISET_CALL GetCropOverscan() noexcept override;
    bool LUMISET_CALL SetCropOverscan(bool value) noexcept override;

private:
    HostServices() noexcept;
    bool set(Option option, bool value) noexcept;

    std::array<std::atomic<bool>, kOptionCount> m_values{};
    std::mutex m_setting;
};

}  // namespace lumiset
