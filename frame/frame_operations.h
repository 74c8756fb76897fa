#pragma once

// Operations on whole frames: each looks at the formats of its frames and runs the loops that fit. Free functions
// without state, for any thread, that answer whether they could do it. The rules common to all of them stand in
// operations/copy.h.

#include "frame/operations/alpha.h"
#include "frame/operations/color.h"
#include "frame/operations/color_transform.h"
#include "frame/operations/copy.h"
#include "frame/operations/filter.h"
#include "frame/operations/flip.h"
#include "frame/operations/geometry.h"
#include "frame/operations/values.h"
