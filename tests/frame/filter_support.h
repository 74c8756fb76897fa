#pragma once

// Frames for the tests of filters: rows of odd length between guard bytes, filled at random; and every instruction
// set that this machine has, one after the other.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "frame/frame.h"
#include "hwy/highway.h"

namespace lumiset::test {

class GuardedFrame {
public:
    /// `padding` bytes follow each row; a multiple of 4 for float formats.
    GuardedFrame(std::int32_t width, std::int32_t height, std::int32_t format, std::int32_t padding = 4)
        : m_rowBytes(width * formatBytesPerPixel(format)), m_stride(m_rowBytes + padding), m_height(height) {
        // Rows start 4 bytes past an aligned address, 1 byte further for 8-bit samples.
        m_start = kGuard + (isFloatFormat(format) ? 4U : 5U);
        m_memory.assign(m_start + static_cast<std::size_t>(m_stride) * static_cast<std::size_t>(height) + kGuard,
                        kGuardByte);
        frame.Wrap(m_memory.data() + m_start, width, height, m_stride, formatBytesPerPixel(format), format, false);
    }

    template <class T>
    [[nodiscard]] T* row(std::int32_t y) const {
        return reinterpret_cast<T*>(frame.PixelAddress(0, y, 0));
    }
    [[nodiscard]] std::int32_t samplesPerRow() const {
        return frame.Width() * frame.BytesPerPixel() / BytesPerChannel(frame.Format());
    }
    [[nodiscard]] std::int32_t channels() const { return samplesPerRow() / frame.Width(); }

    /// Random samples; floats in -0.5..1.5. Some are at the ends of the range.
    void randomize(std::mt19937& random) {
        for (std::int32_t y = 0; y < m_height; ++y) {
            for (std::int32_t i = 0; i < samplesPerRow(); ++i) {
                const auto draw = static_cast<std::uint32_t>(random());
                const bool extreme = draw % 8 == 0;
                if (isFloatFormat(frame.Format())) {
                    const float value = static_cast<float>(draw >> 8U) / 8388608.0F - 0.5F;
                    row<float>(y)[i] = extreme ? static_cast<float>(draw >> 31U) : value;
                } else {
                    row<std::uint8_t>(y)[i] = static_cast<std::uint8_t>(extreme ? (draw >> 31U) * 255U : draw >> 24U);
                }
            }
        }
    }

    [[nodiscard]] std::vector<std::uint8_t> bytes() const { return m_memory; }
    void restore(const std::vector<std::uint8_t>& bytes) { std::memcpy(m_memory.data(), bytes.data(), bytes.size()); }

    /// True while every byte outside the pixels is as it was.
    [[nodiscard]] bool guardsAreWhole() const {
        for (std::size_t i = 0; i < m_memory.size(); ++i) {
            const std::size_t inside = i - m_start;
            const bool pixel = i >= m_start &&
                               inside / static_cast<std::size_t>(m_stride) < static_cast<std::size_t>(m_height) &&
                               inside % static_cast<std::size_t>(m_stride) < static_cast<std::size_t>(m_rowBytes);
            if (!pixel && m_memory[i] != kGuardByte) {
                return false;
            }
        }
        return true;
    }

    Frame frame;

private:
    static constexpr std::size_t kGuard = 128;
    static constexpr std::uint8_t kGuardByte = 0xC7;

    std::int32_t m_rowBytes;
    std::int32_t m_stride;
    std::int32_t m_height;
    std::size_t m_start = 0;
    std::vector<std::uint8_t> m_memory;
};

/// Fails unless two frames agree to within `tolerance` (0: bit for bit but for the sign of zero), naming the first
/// sample that does not.
[[nodiscard]] inline ::testing::AssertionResult framesAgree(const GuardedFrame& actual, const GuardedFrame& expected,
                                                            float tolerance = 0.0F) {
    for (std::int32_t y = 0; y < expected.frame.Height(); ++y) {
        for (std::int32_t i = 0; i < expected.samplesPerRow(); ++i) {
            const bool isFloat = isFloatFormat(expected.frame.Format());
            const float a = isFloat ? actual.row<float>(y)[i] : static_cast<float>(actual.row<std::uint8_t>(y)[i]);
            const float e = isFloat ? expected.row<float>(y)[i] : static_cast<float>(expected.row<std::uint8_t>(y)[i]);
            if (!(a - e <= tolerance && e - a <= tolerance)) {
                return ::testing::AssertionFailure()
                       << "sample " << i << " of row " << y << " is " << a << ", expected " << e;
            }
        }
    }
    if (!actual.guardsAreWhole()) {
        return ::testing::AssertionFailure() << "bytes outside the pixels were written";
    }
    return ::testing::AssertionSuccess();
}

/// Runs `check` with each instruction set in turn.
template <class Check>
void onEveryInstructionSet(const Check& check) {
    std::int64_t sets = hwy::SupportedTargets() & HWY_TARGETS;
    ASSERT_NE(sets, 0);
    while (sets != 0) {
        const std::int64_t set = sets & -sets;
        sets &= ~set;
        hwy::SetSupportedTargetsForTest(set);
        hwy::GetChosenTarget().Update(set);
        SCOPED_TRACE(hwy::TargetName(set));
        check();
    }
    hwy::SetSupportedTargetsForTest(0);
    hwy::GetChosenTarget().Update(hwy::SupportedTargets());
}

}  // namespace lumiset::test
