#include "tests/support/system.h"

#include <malloc.h>

#include <cstdlib>

namespace lumiset::test {

void setVariable(const char* name, const char* value) {
    if (value != nullptr) {
        ::setenv(name, value, 1);
    } else {
        ::unsetenv(name);
    }
}

std::size_t heapInUse() {
    const struct mallinfo2 info = ::mallinfo2();
    return info.uordblks + info.hblkhd;
}

}  // namespace lumiset::test
