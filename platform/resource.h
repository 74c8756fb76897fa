#pragma once

#include <cstdint>
#include <span>

namespace lumiset::platform {

/// A file that the module carries along, by its number; empty for a number that stands for none. The bytes live as
/// long as the module.
std::span<const std::uint8_t> findResource(std::uint32_t id) noexcept;

}  // namespace lumiset::platform
