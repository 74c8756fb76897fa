#include "gpu/forced_cpu.h"

#include <atomic>

namespace lumiset {
namespace {

std::atomic<bool> g_forcedCpu{false};

}  // namespace

void setForcedCpu(bool forced) noexcept {
    g_forcedCpu = forced;
}

bool forcedCpu() noexcept {
    return g_forcedCpu;
}

}  // namespace lumiset
