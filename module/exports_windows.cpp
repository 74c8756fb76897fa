// The entry point that only Windows hosts look for.

#include <cstdint>

extern "C" {

/// Hosts may call it when the module is shown to the user; there is nothing to show.
std::int32_t DisplayPromotionW();

std::int32_t DisplayPromotionW() {
    return 0;
}

}  // extern "C"
