#include "tests/support/system.h"

#include <malloc.h>

#include <cstdlib>

namespace lumiset::test {

void setVariable(const char* name, const char* value) {
    _putenv_s(name, value != nullptr ? value : "");  // an empty one is none here
}

std::size_t heapInUse() {
    std::size_t bytes = 0;
    _HEAPINFO entry{};
    while (_heapwalk(&entry) == _HEAPOK) {
        bytes += entry._useflag == _USEDENTRY ? entry._size : 0;
    }
    return bytes;
}

}  // namespace lumiset::test
