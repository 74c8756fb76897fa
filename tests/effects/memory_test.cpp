// Every effect without some of the scratch memory that it asks for, from the host and from the module's own heap: it
// answers false and leaves every byte of the destination, or makes the picture that it makes with memory. Outline
// leaves out a step and Selective Color its softening, and say true; never does unwritten memory show.

#include <gtest/gtest.h>

#include <cstring>
#include <new>
#include <optional>
#include <string_view>

#include "tests/support/effect_tester.h"
#include "tests/support/host_threads.h"

namespace lumiset::test {
namespace {

/// The module's own heap, whose allocations fail and are filled while a render is watched.
struct WatchedHeap {
    bool watched = false;
    int failAt = 0;
    bool sticky = false;
    int filling = 0;
    int calls = 0;

    [[nodiscard]] bool fails() {
        const int call = calls++;
        return call == failAt || (sticky && call > failAt);
    }
};
WatchedHeap heap;

template <class Allocate>
void* allocateWatched(std::size_t size, const Allocate& allocate) noexcept {
    if (heap.watched && heap.fails()) {
        return nullptr;
    }
    void* block = nullptr;
    try {
        block = allocate();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
    if (heap.watched) {
        std::memset(block, heap.filling, size);
    }
    return block;
}

}  // namespace
}  // namespace lumiset::test

// The module allocates by these two alone, and they are this program's in the module too.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return lumiset::test::allocateWatched(size, [&] { return ::operator new(size); });
}
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return lumiset::test::allocateWatched(size, [&] { return ::operator new(size, alignment); });
}

namespace lumiset::test {
namespace {

/// What became of one render.
struct Outcome {
    bool answer;
    int calls;
    Picture result;
};

/// One effect with one preset on small frames, stored upside down for one of the formats.
class Subject {
public:
    Subject(std::uint32_t effect, std::uint32_t preset, std::int32_t format)
        : m_effect(effect),
          m_preset(preset),
          m_tester(effect),
          m_storage{.format = format, .flipped = isFloatFormat(format)},
          m_source(48, 34, m_storage),
          m_destination(48, 34, m_storage) {
        m_values = m_tester->presetHost(preset);
        drawTestCard(m_source);
        drawTestCard(m_destination, true);
    }

    /// The first preset's with a new effect, since one that has rendered may have kept something; the others' with the
    /// same one.
    [[nodiscard]] Outcome render(bool hostsMemory, int failAt, bool sticky, int filling) {
        if (m_preset == 0) {
            m_tester.emplace(m_effect);
        }
        const EffectTester& tester = *m_tester;
        Outcome outcome{false, 0, m_destination};
        const VideoFrameDesc from = m_source.desc();
        const VideoFrameDesc to = outcome.result.desc();
        const FrameRenderInfo info = frameInfo(1.25);
        if (hostsMemory) {
            FailingHost host(failAt, m_values, sticky, filling);
            outcome.answer = tester.effect().ProcessFrame(&host, &from, nullptr, &to, &info);
            outcome.calls = host.calls();
            EXPECT_EQ(host.outstanding(), 0U);
            EXPECT_TRUE(host.freesAreValid());
        } else {
            heap = {true, failAt, sticky, filling, 0};
            outcome.answer = tester.effect().ProcessFrame(&m_values, &from, nullptr, &to, &info);
            heap.watched = false;
            outcome.calls = heap.calls;
        }
        EXPECT_TRUE(outcome.result.guardsIntact());
        return outcome;
    }
    [[nodiscard]] const Picture& destination() const { return m_destination; }

private:
    std::uint32_t m_effect;
    std::uint32_t m_preset;
    std::optional<EffectTester> m_tester;
    Storage m_storage;
    Picture m_source;
    Picture m_destination;  // before a render
    ValueHost m_values;
};

/// Fails the n-th allocation until there is none of that number. Returns how many renders lacked some memory.
int sweep(Subject& subject, bool hostsMemory, bool sticky, bool mayLeaveOut) {
    const Outcome whole = subject.render(hostsMemory, FailingHost::kNever, false, 0x00);
    EXPECT_TRUE(whole.answer);
    for (int failAt = 0; failAt < 100; ++failAt) {
        const Outcome first = subject.render(hostsMemory, failAt, sticky, 0x00);
        if (first.answer) {
            const Outcome second = subject.render(hostsMemory, failAt, sticky, 0x5B);
            EXPECT_TRUE(second.answer) << failAt;
            EXPECT_EQ(first.result.bytes(), second.result.bytes()) << "unwritten memory shows: " << failAt;
        }
        if (first.calls <= failAt) {
            EXPECT_TRUE(first.answer);
            EXPECT_EQ(first.result.bytes(), whole.result.bytes());
            return failAt;
        }
        if (!first.answer) {
            EXPECT_EQ(first.result.bytes(), subject.destination().bytes()) << "half rendered: " << failAt;
        } else if (!mayLeaveOut) {
            EXPECT_EQ(first.result.bytes(), whole.result.bytes()) << "a step left out: " << failAt;
        }
        if (::testing::Test::HasFailure()) {
            return failAt;
        }
    }
    ADD_FAILURE() << "the effect does not stop to ask for memory";
    return 0;
}

TEST(EveryPreset, RendersWholeOrNotAtAllWhenMemoryRunsOut) {
    int renders = 0;
    for (std::uint32_t effect = 0; EffectTester(effect).exists(); ++effect) {
        const EffectTester tester(effect);
        const std::string_view name = tester.effect().GetEffectName();
        const bool mayLeaveOut = name == "Outline" || name == "Selective Color";
        for (std::uint32_t preset = 0; preset < tester.presetCount(); ++preset) {
            for (const std::int32_t format : {kFormatBgra8, kFormatBgraFloat}) {
                Subject subject(effect, preset, format);
                for (const bool hostsMemory : {true, false}) {
                    for (const bool sticky : {false, true}) {
                        SCOPED_TRACE(::testing::Message()
                                     << name << ", " << tester.effect().GetPresetName(preset) << ", format " << format
                                     << (hostsMemory ? ", host's memory" : ", own heap") << (sticky ? ", sticky" : ""));
                        renders += sweep(subject, hostsMemory, sticky, mayLeaveOut);
                        if (HasFailure()) {
                            return;
                        }
                    }
                }
            }
        }
    }
    EXPECT_GT(renders, 1000) << "the module's heap is watched too";
}

/// The outcome of a render on frames that are divided among threads.
Outcome renderDivided(const EffectTester& tester, const ValueHost& values, Picture& source, int failAt,
                      std::uint32_t threads) {
    HostThreads pool(threads);
    FailingHost host(failAt, values);
    host.offers = &pool;
    Outcome outcome{false, 0, Picture(source.width(), source.height(), source.storage())};
    drawTestCard(outcome.result, true);
    const VideoFrameDesc from = source.desc();
    const VideoFrameDesc to = outcome.result.desc();
    const FrameRenderInfo info = frameInfo(1.25);
    outcome.answer = tester.effect().ProcessFrame(&host, &from, nullptr, &to, &info);
    outcome.calls = host.calls();
    EXPECT_EQ(host.outstanding(), 0U);
    EXPECT_TRUE(host.freesAreValid());
    EXPECT_EQ(pool.references(), 1);
    return outcome;
}

TEST(EveryEffect, LacksMemoryOnManyThreadsAsOnOne) {
    for (const std::int32_t format : {kFormatBgra8, kFormatBgraFloat}) {
        Picture small(60, 40, {.format = format});
        Picture large(520, 270, {.format = format});
        drawTestCard(large);
        for (std::uint32_t effect = 0; EffectTester(effect).exists(); ++effect) {
            const EffectTester tester(effect);
            // The preset that asks for memory most often.
            int most = 0;
            ValueHost values;
            for (std::uint32_t preset = 0; preset < tester.presetCount(); ++preset) {
                const ValueHost host = tester.presetHost(preset);
                if (const int calls = renderDivided(tester, host, small, FailingHost::kNever, 1).calls; calls > most) {
                    most = calls;
                    values = host;
                }
            }
            for (int failAt = 0; failAt <= most; ++failAt) {
                SCOPED_TRACE(::testing::Message()
                             << tester.effect().GetEffectName() << ", format " << format << ", allocation " << failAt);
                const Outcome expected = renderDivided(tester, values, large, failAt, 1);
                const Outcome divided = renderDivided(tester, values, large, failAt, 3);
                EXPECT_EQ(divided.answer, expected.answer);
                EXPECT_EQ(divided.calls, expected.calls);
                EXPECT_TRUE(divided.result.bytes() == expected.result.bytes());
            }
        }
    }
}

/// The size of what is reserved before the first write must suffice for every size of frame: a render that asks again
/// could fail half way.
TEST(EveryPreset, HasItsScratchAtOnceWhereItWritesEarly) {
    for (const std::string_view name : {"Old TV", "Viewfinder"}) {
        std::uint32_t effect = 0;
        while (name != EffectTester(effect).effect().GetEffectName()) {
            ++effect;
        }
        const EffectTester tester(effect);
        for (std::uint32_t preset = 0; preset < tester.presetCount(); ++preset) {
            ValueHost values = tester.presetHost(preset);
            for (const auto& [width, height] :
                 {std::pair{1, 1}, {3, 200}, {300, 2}, {16, 16}, {47, 33}, {129, 70}, {640, 360}, {3001, 17}}) {
                for (const float aspect : {1.0F, 0.7F, 1.6F}) {
                    Picture source(width, height, {.format = kFormatArgbFloat});
                    Picture result = source;
                    const VideoFrameDesc from = source.desc();
                    const VideoFrameDesc to = result.desc();
                    FrameRenderInfo info = frameInfo(1.25);
                    info.flags = FrameRenderInfo::kHasPixelAspect;
                    info.pixelAspect = aspect;
                    FailingHost host(FailingHost::kNever, values);
                    ASSERT_TRUE(tester.effect().ProcessFrame(&host, &from, nullptr, &to, &info));
                    EXPECT_LE(host.calls(), 1) << name << ", " << tester.effect().GetPresetName(preset) << ", " << width
                                               << " x " << height << ", " << aspect;
                }
            }
        }
    }
}

}  // namespace
}  // namespace lumiset::test
