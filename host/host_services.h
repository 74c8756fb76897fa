#pragma once

#include "host/unknown.h"

namespace lumiset {

/// The user's options, one object for the whole process. Safe from any thread. A setter keeps the value for
/// this process and returns whether it was also written to the user's store.
class IHostServices : public IUnknown {
public:
    static constexpr Guid kId{0x5D1F6E0A, 0x3C8B, 0x4B0E, {0x9A, 0x77, 0x2E, 0x41, 0xC6, 0x0D, 0x93, 0x58}};

    virtual bool LUMISET_CALL GetForcedCpu() noexcept = 0;
    virtual bool LUMISET_CALL SetForcedCpu(bool value) noexcept = 0;
    virtual bool LUMISET_CALL GetKnobsDragVertical() noexcept = 0;
    virtual bool LUMISET_CALL SetKnobsDragVertical(bool value) noexcept = 0;
    virtual bool LUMISET_CALL GetKeyFramesVsPresets() noexcept = 0;
    virtual bool LUMISET_CALL SetKeyFramesVsPresets(bool value) noexcept = 0;
    virtual bool LUMISET_CALL GetCropOverscan() noexcept = 0;
    virtual bool LUMISET_CALL SetCropOverscan(bool value) noexcept = 0;

protected:
    ~IHostServices() = default;
};

}  // namespace lumiset
