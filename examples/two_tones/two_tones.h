#pragma once

#include "host/video_effect.h"

namespace lumiset {

/// "Two Tones": the picture's brightness drawn from one colour to another, as a print in two inks shows it.
IVideoGPUEffect* makeTwoTones() noexcept;

}  // namespace lumiset
