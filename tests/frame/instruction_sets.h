#pragma once

// Every instruction set that this machine has, one after the other.

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "hwy/highway.h"

namespace lumiset::test {

/// Makes the primitives use one instruction set until destruction.
class ForcedTarget {
public:
    explicit ForcedTarget(std::int64_t target) { choose(target); }
    ~ForcedTarget() { choose(0); }
    ForcedTarget(const ForcedTarget&) = delete;
    ForcedTarget& operator=(const ForcedTarget&) = delete;

private:
    static void choose(std::int64_t target) {
        hwy::SetSupportedTargetsForTest(target);
        hwy::GetChosenTarget().Update(hwy::SupportedTargets());
    }
};

/// The instruction sets that are built and that this machine has.
inline std::vector<std::int64_t> machineTargets() {
    std::vector<std::int64_t> targets;
    for (std::int64_t rest = hwy::SupportedTargets() & HWY_TARGETS; rest != 0; rest &= rest - 1) {
        targets.push_back(rest & -rest);
    }
    return targets;
}

/// Runs `check` with each instruction set in turn.
template <class Check>
void onEveryInstructionSet(const Check& check) {
    for (const std::int64_t target : machineTargets()) {
        const ForcedTarget forced(target);
        SCOPED_TRACE(hwy::TargetName(target));
        check();
    }
}

}  // namespace lumiset::test
