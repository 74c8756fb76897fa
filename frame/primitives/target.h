#pragma once

// Vector code for several instruction sets from one source. A file of primitives is laid out as
//
//     #undef HWY_TARGET_INCLUDE
//     #define HWY_TARGET_INCLUDE "frame/primitives/copy.cpp"
//     #include "hwy/foreach_target.h"  // compiles this file once per instruction set
//     #include "hwy/highway.h"
//     HWY_BEFORE_NAMESPACE();
//     namespace lumiset::HWY_NAMESPACE {
//         template <...> void addRows(...) { ... }           // loops, as templates where they form a family
//         const AddLoops& addLoops() { static constexpr AddLoops kLoops{...}; return kLoops; }
//     }
//     HWY_AFTER_NAMESPACE();
//     #if HWY_ONCE
//     namespace lumiset {
//         HWY_EXPORT(addLoops);
//         ImgStatus ImgAdd...(...) noexcept { ...; HWY_DYNAMIC_DISPATCH(addLoops)().f32(...); }
//     }
//     #endif
//
// with a struct of plain function pointers (AddLoops) declared once before, so that one look-up serves a family
// of templates. The file may do without Highway's vector types: ordinary loops between the two macros are
// vectorised by the compiler for each instruction set. Lambdas there need HWY_ATTR. Multiply and add stay two
// roundings (never MulAdd), so that every instruction set gives the same floats.

#include "frame/primitives/check.h"
#include "frame/primitives/status.h"
