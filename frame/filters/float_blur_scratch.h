#pragma once

#include <cstdint>

namespace lumiset {

/// Sums of a band, which are kept from row to row, and rows between the passes.
struct FloatBlurScratch {
    double* slopes;      ///< S of each sample of a row
    double* sums;        ///< T of each sample of a row
    float* rows;         ///< four rows after the vertical pass (masks)
    float* interleaved;  ///< four samples for each x, with columns left of the picture before them
    float* results;      ///< as `interleaved`, after the horizontal pass (masks)
    std::int64_t rowStride;
};

}  // namespace lumiset
