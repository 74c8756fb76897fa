#pragma once

#include <string>

#include "tests/support/picture.h"

namespace lumiset::test {

/// Writes both pictures and their difference (eight times enlarged) beside each other as a PNG, each over a
/// chequered ground and, in a second row, its alpha alone. Returns the file's path.
std::string writeComparison(const Picture& a, const Picture& b, const std::string& name);

}  // namespace lumiset::test
