#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "apps/studio/core/picture_scaling.h"
#include "hostkit/look.h"

namespace lumiset::studio {

/// A look at one moment of its editing; nobody changes it any more, so any thread may read it.
using LookSnapshot = std::shared_ptr<const hostkit::Look>;

/// What is shown of interlaced pictures: both fields as they stand in the frame, or one alone, its lines doubled by
/// their means.
enum class Fields { kWoven, kFirst, kSecond };

/// A picture that somebody wants to see.
struct FrameWish {
    std::int64_t frame = 0;
    LookSnapshot look;    ///< null: the source
    LookSnapshot before;  ///< to compare with; null: the source
    bool compares = false;
    int divisor = 1;  ///< effects work on this part of the size: 1, 2 or 4
    Size size;        ///< to be shown at
    bool gpu = false;
    Fields fields = Fields::kWoven;
    std::uint64_t number = 0;  ///< the wisher's own
};

/// What came of it.
struct FrameShot {
    FrameWish wish;
    std::shared_ptr<const DisplayPicture> picture;  ///< null: see `error`
    std::shared_ptr<const DisplayPicture> before;   ///< null where nothing is compared
    double timeSeconds = 0.0;                       ///< of the frame
    double effectSeconds = 0.0;                     ///< what the effects took; 0: it was there
    std::string error;                              ///< whole sentences
};

/// What a clip is.
struct ClipInfo {
    std::string path;
    media::VideoFormat format;
    std::int64_t frameCount = 1;
    media::Source::Origin origin;  ///< of its sound
};

}  // namespace lumiset::studio
