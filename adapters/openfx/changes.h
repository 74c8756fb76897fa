#pragma once

#include <string>

#include "adapters/openfx/instance.h"

namespace lumiset::openfx {

/// Does what a person's edit of a parameter asks for: applies a preset, loads or saves a preset file. Answers the
/// action's status; failures are told to the person.
[[nodiscard]] Status instanceChanged(const Instance& instance, const Properties& inArgs);

}  // namespace lumiset::openfx
