#pragma once

namespace lumiset {

/// The user's wish that effects render on the processor alone, for the whole process: `InitGPU` of every effect answers
/// false while it holds. Safe from any thread.
void setForcedCpu(bool forced) noexcept;
[[nodiscard]] bool forcedCpu() noexcept;

}  // namespace lumiset
