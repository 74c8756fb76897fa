#pragma once

#include <functional>

#include "adapters/openfx/image.h"
#include "host/records.h"

namespace lumiset::openfx {

/// Asked every few rows; false ends the work.
using GoOn = std::function<bool()>;

/// Which rows are meant, counted from a picture's bottom.
enum class Rows { kAll, kLower, kUpper };  ///< lower are 0, 2, 4 .., upper 1, 3, 5 ..

/// Copies the region, which lies within the pixels, to a frame of its size with straight alpha, in `kFormatBgra8` for
/// bytes and `kFormatBgraFloat` for everything else (8-bit pixels may go to either), top row first. Returns false when
/// it was ended before.
[[nodiscard]] bool readPixels(const Pixels& pixels, const RectI& region, const VideoFrameDesc& frame, const GoOn& goOn);

/// The reverse: the frame is the picture in `region`. Only what lies in `window` and the pixels' bounds is written, of
/// the rows that are meant; beyond the region it is transparent. Where the pixels have no alpha the frame is put over
/// black. Where it is ended before, the rest stays as it was.
void writePixels(const VideoFrameDesc& frame, const RectI& region, const Pixels& pixels, const RectI& window, Rows rows,
                 const GoOn& goOn);

/// Makes the window transparent, where the pixels have no alpha black. Rows are counted from `bottom`.
void clearPixels(const Pixels& pixels, const RectI& window, Rows rows, int bottom);

}  // namespace lumiset::openfx
