#pragma once

#include <cstddef>

namespace lumiset::test {

/// Sets a variable of this process's environment; null takes it away.
void setVariable(const char* name, const char* value);

/// Bytes that the heap has handed out; 0 where it does not tell, as a sanitizer's.
std::size_t heapInUse();

}  // namespace lumiset::test
