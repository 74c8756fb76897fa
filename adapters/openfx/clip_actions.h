#pragma once

#include "adapters/openfx/instance.h"

namespace lumiset::openfx {

// What a host asks about an instance's clips. Each answers the action's status.

[[nodiscard]] Status getClipPreferences(const Instance& instance, const Properties& outArgs);
[[nodiscard]] Status getRegionOfDefinition(const Instance& instance, const Properties& inArgs,
                                           const Properties& outArgs);
[[nodiscard]] Status getRegionsOfInterest(const Instance& instance, const Properties& inArgs,
                                          const Properties& outArgs);
[[nodiscard]] Status isIdentity(const Instance& instance, const Properties& inArgs, const Properties& outArgs);

}  // namespace lumiset::openfx
