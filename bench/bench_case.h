#pragma once

// What is measured, as data: each row of the table is one `Case`.

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace lumiset::bench {

/// The frame whose memcpy a case is compared with, 1920 x 1080 of this format.
enum class Base { kFrame8, kFrameFloat, kMask8, kMaskFloat };

struct Case {
    std::string name;
    Base base = Base::kFrame8;
    /// Works on the n-th set of frames; false is reported as an error.
    std::function<bool(std::size_t n)> run;
    double aim = 0;                               ///< in memcpys of `base`; 0 for none
    std::function<void(std::size_t n)> opencv{};  ///< the nearest that OpenCV has, or nothing
};

using Cases = std::vector<Case>;

void addPixelPrimitives(Cases& cases);
void addFilterPrimitives(Cases& cases);
void addGeometryPrimitives(Cases& cases);
void addOperations(Cases& cases);
void addOpenFX(Cases& cases);
/// Every effect with every preset through the module's exports, formats 0 and 3.
void addEffects(Cases& cases);

}  // namespace lumiset::bench
