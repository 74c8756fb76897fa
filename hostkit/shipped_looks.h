#pragma once

#include <string_view>
#include <vector>

namespace lumiset::hostkit {

/// The texts of the files in looks/, by their names. Written by cmake/embed_texts.cmake.
[[nodiscard]] const std::vector<std::string_view>& shippedLooks();

}  // namespace lumiset::hostkit
