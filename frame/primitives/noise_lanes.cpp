#include "frame/primitives/noise_lanes.h"

namespace lumiset {
namespace {

// With b = 2^32, a step of the subtract-with-borrow sequence multiplies (b - 1) * newest + older - borrow by b - 1,
// modulo b^2 - b - 1 (Tezuka, L'Ecuyer and Couture, "On the lattice structure of the add-with-carry and
// subtract-with-borrow random number generators", 1993): many steps are one multiplication by a power. Several states
// have one such number; they differ in nothing that is drawn from then on.
constexpr std::uint64_t kHalf = std::uint64_t{1} << 32U;
constexpr std::uint64_t kLow = kHalf - 1;
constexpr std::uint64_t kModulus = 0 - kHalf - 1;

constexpr std::uint64_t reduced(std::uint64_t a) {
    return a < kModulus ? a : a - kModulus;
}

/// Of two reduced numbers.
constexpr std::uint64_t sum(std::uint64_t a, std::uint64_t b) {
    const std::uint64_t total = a + b;
    return reduced(total < a ? total + kHalf + 1 : total);  // b^2 is b + 1
}

constexpr std::uint64_t product(std::uint64_t a, std::uint64_t b) {
    const std::uint64_t low = (a & kLow) * (b & kLow);
    const std::uint64_t middle = (a >> 32U) * (b & kLow);
    const std::uint64_t other = (a & kLow) * (b >> 32U);
    const std::uint64_t carried = (low >> 32U) + (middle & kLow) + (other & kLow);
    const std::uint64_t bottom = (low & kLow) | carried << 32U;
    const std::uint64_t top = (a >> 32U) * (b >> 32U) + (middle >> 32U) + (other >> 32U) + (carried >> 32U);
    // top * b^2 is top * (b + 1), whose upper half is beyond b^2 once more.
    const std::uint64_t beyond = top >> 32U;
    return sum(sum(reduced(bottom), reduced(top)), sum(reduced(top << 32U), reduced(beyond << 32U | beyond)));
}

/// Steps the seed and scatters its bits (the finisher of MurmurHash3, Appleby), so that seeds that follow each other
/// give unrelated lanes.
std::uint32_t next(std::uint32_t& seed) {
    seed = seed * 69069U + 1013904243U;
    std::uint32_t h = seed;
    h = (h ^ (h >> 16U)) * 0x85EBCA6BU;
    h = (h ^ (h >> 13U)) * 0xC2B2AE35U;
    return h ^ (h >> 16U);
}

}  // namespace

NoiseLanes::NoiseLanes(std::uint32_t& seed) {
    for (std::size_t i = 0; i < kCount; ++i) {
        congruential[i] = next(seed);
        newest[i] = next(seed);
        older[i] = next(seed);
    }
}

void NoiseLanes::skip(std::uint32_t steps) {
    // What `steps` steps do to a congruential number, and to the other kind: put together from steps of 1, 2, 4, ...
    std::uint32_t factor = 1;
    std::uint32_t decrement = 0;
    std::uint64_t power = 1;
    std::uint32_t stepFactor = kMultiplier;
    std::uint32_t stepDecrement = kDecrement;
    std::uint64_t stepPower = kLow;
    for (; steps != 0; steps >>= 1U) {
        if ((steps & 1U) != 0) {
            decrement = decrement * stepFactor + stepDecrement;
            factor *= stepFactor;
            power = product(power, stepPower);
        }
        stepDecrement = stepDecrement * stepFactor + stepDecrement;
        stepFactor *= stepFactor;
        stepPower = product(stepPower, stepPower);
    }
    for (std::size_t i = 0; i < kCount; ++i) {
        congruential[i] = congruential[i] * factor - decrement;
        const std::uint64_t state = product(reduced(kLow * newest[i] + older[i] - borrow[i]), power);
        newest[i] = static_cast<std::uint32_t>(state / kLow);
        older[i] = static_cast<std::uint32_t>(state % kLow);
        borrow[i] = 0;
    }
}

}  // namespace lumiset
