#pragma once

// The image primitives: loops over raw planes, each a pointer to the first sample and a step from row to row in
// bytes. In the names 8 is unsigned 8-bit and F single-precision float; C1 one channel, C4 four channels, A4
// four-sample pixels of which the first three are touched. Nothing here knows `Frame`. No function throws or
// keeps state; planes need no alignment beyond that of their samples.

#include "frame/primitives/alpha.h"
#include "frame/primitives/arithmetic.h"
#include "frame/primitives/border.h"
#include "frame/primitives/box.h"
#include "frame/primitives/color.h"
#include "frame/primitives/convert.h"
#include "frame/primitives/convolve.h"
#include "frame/primitives/copy.h"
#include "frame/primitives/fill.h"
#include "frame/primitives/gauss.h"
#include "frame/primitives/limits.h"
#include "frame/primitives/lookup.h"
#include "frame/primitives/memory.h"
#include "frame/primitives/morphology.h"
#include "frame/primitives/noise.h"
#include "frame/primitives/resize.h"
#include "frame/primitives/sharpen.h"
#include "frame/primitives/spread.h"
#include "frame/primitives/status.h"
#include "frame/primitives/warp.h"
