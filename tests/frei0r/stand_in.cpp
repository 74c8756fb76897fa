#include "tests/frei0r/stand_in.h"

void updateAsFilterLibrary(decltype(&f0r_update) update, Frei0rInstance instance, double time,
                           const std::uint32_t* source, std::uint32_t* destination) {
    update(instance, time, source, destination);
    // Something left to do keeps the compiler from handing the caller's return address on.
    static volatile int calls = 0;
    calls = calls + 1;
}
