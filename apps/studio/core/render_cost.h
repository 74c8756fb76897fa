#pragma once

namespace lumiset::studio {

/// Chooses the size to render at while somebody drags, from what the last renders took.
class RenderCost {
public:
    static constexpr double kSwiftSeconds = 0.040;  ///< a drag follows the hand as long as frames come as fast

    /// A render at a part of the size, 1, 2 or 4, has taken so long.
    void measured(int divisor, double seconds);
    void forget() { m_fullSeconds = 0.0; }
    /// 1, 2 or 4. Full size as long as nothing is known: small renders look different.
    [[nodiscard]] int divisor() const;
    [[nodiscard]] double fullSeconds() const { return m_fullSeconds; }

private:
    double m_fullSeconds = 0.0;
};

}  // namespace lumiset::studio
