#include "apps/studio/core/render_cost.h"

namespace lumiset::studio {

void RenderCost::measured(int divisor, double seconds) {
    const double full = seconds * divisor * divisor;
    // One slow frame, when another program wants the processor, is not yet a slow look.
    m_fullSeconds = m_fullSeconds > 0.0 ? 0.5 * (m_fullSeconds + full) : full;
}

int RenderCost::divisor() const {
    return m_fullSeconds <= kSwiftSeconds ? 1 : m_fullSeconds <= 4.0 * kSwiftSeconds ? 2 : 4;
}

}  // namespace lumiset::studio
