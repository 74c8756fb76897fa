#pragma once

// One validator for every image primitive. A test states a primitive's meaning once as plain scalar code; the
// validator runs both on equal random planes, over many sizes, row layouts and every instruction set of the
// machine, and compares whole memory blocks: results, skipped samples, row padding and guards. It also checks
// that every null pointer, bad size and bad step is refused with nothing written.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <sstream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "frame/primitives/check.h"
#include "frame/primitives/status.h"
#include "tests/frame/instruction_sets.h"

namespace lumiset::test {

/// How a plane lies in memory.
struct PlaneLayout {
    int offset;   ///< samples by which the first row misses the start of an aligned block
    int padding;  ///< samples between rows
    bool tight;   ///< the block ends with the last touched sample, where a sanitizer sees a read beyond
};
inline constexpr PlaneLayout kPlaneLayouts[] = {{0, 0, false}, {3, 5, false}, {1, 0, true}, {7, 16, true}};

/// What a primitive does with one plane.
struct PlaneSpec {
    int samples = 1;     ///< of a pixel
    int first = 0;       ///< the sample that the pointer is advanced to
    int touched = 1;     ///< samples of a pixel that may be read or written, from `first` on
    int margin = 0;      ///< valid pixels around the region, for filters
    float low = -0.25F;  ///< range of random floats
    float high = 1.25F;
};
inline constexpr PlaneSpec kOneChannel{1, 0, 1};
inline constexpr PlaneSpec kAllFour{4, 0, 4};
/// Three colours with alpha last and first, and single channels of four.
inline constexpr PlaneSpec kColours{4, 0, 3};
inline constexpr PlaneSpec kColoursAfterAlpha{4, 1, 3};
constexpr PlaneSpec channelOfFour(int index) {
    return {4, index, 1};
}

/// A plane of random samples inside a memory block of its own, with guards before and behind.
template <class T>
class TestPlane {
public:
    TestPlane(PlaneSpec spec, ImgSize size, PlaneLayout layout, std::mt19937& random) : m_spec(spec), m_size(size) {
        constexpr int kGuard = 64;
        const int rowPixels = size.width + 2 * spec.margin;
        const int rows = size.height + 2 * spec.margin;
        m_stepSamples = rowPixels * spec.samples + layout.padding;
        m_start = kGuard + layout.offset + spec.margin * (m_stepSamples + spec.samples) + spec.first;
        const int lastRow = kGuard + layout.offset + (rows - 1) * m_stepSamples;
        const int end = spec.first + (rowPixels - 1) * spec.samples + spec.touched;
        m_samples.resize(static_cast<std::size_t>(
            lastRow + (layout.tight ? end : std::max(end, rowPixels * spec.samples) + kGuard)));
        std::uniform_real_distribution<float> real(spec.low, spec.high);
        for (T& sample : m_samples) {
            const unsigned kind = static_cast<unsigned>(random()) % 8;
            const auto byte = static_cast<std::uint8_t>(kind == 0 ? 0 : kind == 1 ? 255 : random() & 0xFFU);
            if constexpr (sizeof(T) == 1) {
                sample = byte;
            } else {
                sample = kind < 4 ? static_cast<T>(byte) / T{255} : static_cast<T>(real(random));
            }
        }
    }

    [[nodiscard]] Plane<T> plane() {
        return {m_samples.data() + m_start, m_stepSamples * static_cast<std::int32_t>(sizeof(T))};
    }
    [[nodiscard]] const PlaneSpec& spec() const { return m_spec; }

    /// Empty, or where this block differs from another of the same shape: exactly for a tolerance of 0, else by
    /// more than that.
    [[nodiscard]] std::string difference(const TestPlane& expected, float tolerance) const {
        for (std::size_t i = 0; i < m_samples.size(); ++i) {
            const T a = m_samples[i];
            const T b = expected.m_samples[i];
            if (std::memcmp(&a, &b, sizeof a) == 0 ||
                (tolerance > 0 && std::abs(static_cast<float>(a) - static_cast<float>(b)) <= tolerance)) {
                continue;
            }
            const int at = static_cast<int>(i) - m_start;
            const int y = static_cast<int>(std::floor(static_cast<float>(at) / static_cast<float>(m_stepSamples)));
            std::ostringstream text;
            text << "row " << y << ", sample " << at - y * m_stepSamples << " of a region of " << m_size.width << " x "
                 << m_size.height << ": " << +a << " where " << +b << " was expected";
            return text.str();
        }
        return {};
    }

private:
    PlaneSpec m_spec;
    ImgSize m_size;
    int m_stepSamples = 0;
    int m_start = 0;
    std::vector<T> m_samples;
};

/// Every width and height from 1 to 70, and some squares.
inline std::vector<ImgSize> sweptSizes() {
    std::vector<ImgSize> sizes;
    for (int n = 1; n <= 70; ++n) {
        sizes.push_back({n, 1 + n % 3});
        sizes.push_back({1 + n % 5, n});
        if (n % 9 == 0) {
            sizes.push_back({n, n});
        }
    }
    sizes.push_back({301, 2});
    return sizes;
}

/// The planes of one call, as copies can be made of them.
template <class... T>
struct TestPlanes {
    std::tuple<TestPlane<T>...> planes;

    template <class F>
    auto call(const F& f, ImgSize size) {
        return std::apply([&](auto&... plane) { return f(size, plane.plane()...); }, planes);
    }
    [[nodiscard]] std::string difference(const TestPlanes& expected, float tolerance) const {
        return differenceAt(expected, tolerance, std::index_sequence_for<T...>());
    }

private:
    template <std::size_t... I>
    [[nodiscard]] std::string differenceAt(const TestPlanes& expected, float tolerance,
                                           std::index_sequence<I...>) const {
        std::string text;
        const auto one = [&](const char* name, const auto& plane, const auto& other) {
            const std::string found = plane.difference(other, tolerance);
            if (text.empty() && !found.empty()) {
                text = name + found;
            }
        };
        static constexpr const char* kNames[] = {"first plane, ", "second plane, ", "third plane, ", "fourth plane, "};
        (one(kNames[I], std::get<I>(planes), std::get<I>(expected.planes)), ...);
        return text;
    }
};

template <class... T, std::size_t N>
TestPlanes<T...> makePlanes(const PlaneSpec (&specs)[N], ImgSize size, std::size_t layout, std::mt19937& random) {
    static_assert(sizeof...(T) == N);
    constexpr std::size_t kLayouts = std::size(kPlaneLayouts);
    std::size_t i = 0;
    // Braces evaluate from left to right. Neighbouring planes get different layouts, save where all are packed.
    return {std::tuple<TestPlane<T>...>{[&] {
        const std::size_t at = layout == 0 ? 0 : (layout + i) % kLayouts;
        return TestPlane<T>(specs[i++], size, kPlaneLayouts[at], random);
    }()...}};
}

/// Every refusal that all primitives share, one plane at a time.
template <class... T, class Run, std::size_t N>
[[nodiscard]] std::string findUncheckedArgument(const PlaneSpec (&specs)[N], const Run& run) {
    std::mt19937 random(7);
    const ImgSize size{5, 3};
    struct Change {
        const char* name;
        ImgStatus expected;
        bool null;
        ImgSize size;
        int step;  ///< 0: as it is; 1: a byte short; else that number
    };
    const Change changes[] = {
        {"null", kImgNullPointer, true, size, 0},           {"no width", kImgBadSize, false, {0, 3}, 0},
        {"no height", kImgBadSize, false, {5, 0}, 0},       {"width below 0", kImgBadSize, false, {-5, 3}, 0},
        {"height below 0", kImgBadSize, false, {5, -3}, 0}, {"short step", kImgBadStep, false, size, 1},
        {"step below 0", kImgBadStep, false, size, -4096}};
    for (const Change& change : changes) {
        for (std::size_t which = 0; which < N; ++which) {
            TestPlanes<T...> actual = makePlanes<T...>(specs, size, 1, random);
            const TestPlanes<T...> before = actual;
            const ImgStatus status = std::apply(
                [&](auto&... plane) {
                    std::size_t i = 0;
                    const auto changed = [&](auto& testPlane) {
                        auto p = testPlane.plane();
                        if (i++ == which) {
                            p.data = change.null ? nullptr : p.data;
                            const int whole = size.width * testPlane.spec().samples * static_cast<int>(sizeof(*p.data));
                            p.step = change.step == 0 ? p.step : change.step == 1 ? whole - 1 : change.step;
                        }
                        return p;
                    };
                    const std::tuple<Plane<T>...> arguments{changed(plane)...};
                    return std::apply([&](auto... p) { return run(change.size, p...); }, arguments);
                },
                actual.planes);
            if (status != change.expected) {
                return std::string(change.name) + " of plane " + std::to_string(which) + " gives status " +
                       std::to_string(status);
            }
            if (const std::string written = actual.difference(before, 0); !written.empty()) {
                return std::string(change.name) + " was refused, but written: " + written;
            }
        }
    }
    return {};
}

/// Empty, or the first case where `run`, which calls the primitive on (size, planes...) and gives its status, and
/// `meaning`, which does the same in scalar code, leave different memory. Floats may differ by `tolerance`.
template <class... T, class Run, class Meaning, std::size_t N>
[[nodiscard]] std::string findFault(const PlaneSpec (&specs)[N], const Run& run, const Meaning& meaning,
                                    float tolerance = 0) {
    const std::vector<std::int64_t> targets = machineTargets();
    std::mt19937 random(1);
    std::size_t turn = 0;
    for (const ImgSize size : sweptSizes()) {
        for (int repeat = 0; repeat < 2; ++repeat) {
            const TestPlanes<T...> before = makePlanes<T...>(specs, size, turn++ % std::size(kPlaneLayouts), random);
            TestPlanes<T...> expected = before;
            expected.call(meaning, size);
            for (const std::int64_t target : targets) {
                const ForcedTarget forced(target);
                TestPlanes<T...> actual = before;
                const ImgStatus status = actual.call(run, size);
                std::string fault =
                    status != kImgOk ? "status " + std::to_string(status) : actual.difference(expected, tolerance);
                if (!fault.empty()) {
                    return std::string(hwy::TargetName(target)) + ": " + fault;
                }
            }
        }
        ++turn;
    }
    return findUncheckedArgument<T...>(specs, run);
}

/// The same for pointwise primitives: `meaning` gets pointers to the samples of one pixel in each plane.
template <class... T, class Run, class Meaning, std::size_t N>
[[nodiscard]] std::string findPixelFault(const PlaneSpec (&specs)[N], const Run& run, const Meaning& meaning,
                                         float tolerance = 0) {
    const auto region = [&](ImgSize size, Plane<T>... planes) {
        for (std::int32_t y = 0; y < size.height; ++y) {
            for (std::int32_t x = 0; x < size.width; ++x) {
                std::size_t i = 0;
                const auto pixel = [&](const auto& plane) { return plane.row(y) + x * specs[i++].samples; };
                const std::tuple<T*...> pixels{pixel(planes)...};
                std::apply(meaning, pixels);
            }
        }
    };
    return findFault<T...>(specs, run, region, tolerance);
}

/// floor(v + 0.5) limited to 0..255.
inline std::uint8_t roundedByte(float v) {
    return static_cast<std::uint8_t>(std::floor(std::min(std::max(0.0F, v), 255.0F) + 0.5F));
}

}  // namespace lumiset::test
