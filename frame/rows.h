#pragma once

// Loops over the rows of frames, in bands on the host's threads.

#include "frame/bands.h"
#include "frame/frame.h"
#include "frame/layout.h"

namespace lumiset {

/// Calls `work(layout, first, rows)` for bands of rows of `target`, in the layout of a colour format. False for any
/// other format.
template <class Work>
bool visitBands(std::int32_t format, const Frame& target, const Work& work) {
    return visitLayout(format, [&](auto layout) {
        return inBands(target.Resources(), {target.Width(), target.Height()},
                       [&](std::int32_t first, std::int32_t rows) {
                           work(layout, first, rows);
                           return true;
                       });
    });
}

/// Calls `work(layout, y, to, from...)` for every row of `target`, with the samples of that row and of the same row of
/// the other frames.
template <class Work, class... Sources>
bool visitRows(std::int32_t format, Frame& target, const Work& work, const Sources&... sources) {
    return visitBands(format, target, [&](auto layout, std::int32_t first, std::int32_t rows) {
        using Sample = typename decltype(layout)::Sample;
        for (std::int32_t y = first; y < first + rows; ++y) {
            work(layout, y, target.row<Sample>(y), sources.template row<const Sample>(y)...);
        }
    });
}

}  // namespace lumiset
