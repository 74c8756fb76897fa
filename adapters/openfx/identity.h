#pragma once

#include "hostkit/parameter_store.h"

namespace lumiset::openfx {

/// True where an effect with these constant values gives every picture back as it came, to the bit. False where that is
/// not known.
[[nodiscard]] bool changesNothing(const hostkit::ParameterStore& values);

}  // namespace lumiset::openfx
