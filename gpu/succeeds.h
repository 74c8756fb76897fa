#pragma once

#include <exception>

namespace lumiset {

/// For functions that answer with a boolean: a failure of any kind is false.
template <class Work>
bool succeeds(Work work) noexcept {
    try {
        return work();
    } catch (const std::exception&) {
        return false;
    }
}

}  // namespace lumiset
