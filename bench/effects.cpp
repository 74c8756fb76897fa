#include "bench/bench_case.h"

namespace lumiset::bench {
void addPixelPrimitives(Cases&) {}
void addFilterPrimitives(Cases&) {}
void addOperations(Cases&) {}
void addEffects(Cases&) {}
}  // namespace lumiset::bench
