// Every allocation that reading or writing a preset asks for fails once, and from then on: nothing may stay allocated.

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <new>

#include "support/option_store.h"
#include "support/preset_file.h"

namespace {

struct Memory {
    bool counts = false;
    int failAt = 0;
    bool sticky = false;
    int calls = 0;
    int outstanding = 0;
};

Memory memory;

}  // namespace

// Not inlined: the compiler would take a block for one of malloc and complain of how it is given back.
[[gnu::noinline]] void* operator new(std::size_t size) {
    if (memory.counts) {
        const int call = memory.calls++;
        if (call == memory.failAt || (memory.sticky && call > memory.failAt)) {
            throw std::bad_alloc();
        }
        ++memory.outstanding;
    }
    void* const block = std::malloc(size > 0 ? size : 1);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

[[gnu::noinline]] void operator delete(void* block) noexcept {
    memory.outstanding -= memory.counts && block != nullptr ? 1 : 0;
    std::free(block);
}

[[gnu::noinline]] void operator delete(void* block, std::size_t /*size*/) noexcept {
    operator delete(block);
}

namespace lumiset {
namespace {

/// What stays allocated behind `work`, for the first failure that leaves something; 0 when none does.
template <class Work>
int leftBehind(bool sticky, Work work) {
    for (int failAt = 0;; ++failAt) {
        memory = {true, failAt, sticky, 0, 0};
        bool done = true;
        try {
            work();
        } catch (const std::bad_alloc&) {
            done = false;
        }
        memory.counts = false;
        if (memory.outstanding != 0 || done) {
            EXPECT_GT(failAt, 20) << "too few failures for a test";
            return memory.outstanding;
        }
    }
}

TEST(PresetMemory, IsGivenBackWhereverItRunsOut) {
    // Texts that are too long to be held without an allocation.
    const Preset preset{std::string(40, 'n'),
                        std::string(40, 'l'),
                        std::string(40, 'e') + "&<>\"'",
                        {{kParamGroup, {}}, {kParamPoint, {}}, {kParamSlider, {}}, {kParamColor, {}}}};
    const std::string text = presetText(preset);
    ASSERT_TRUE(parsePreset(text));
    for (const bool sticky : {false, true}) {
        EXPECT_EQ(leftBehind(sticky, [&] { (void)presetText(preset); }), 0);
        EXPECT_EQ(leftBehind(sticky, [&] { (void)parsePreset(text); }), 0);
    }
}

/// A read that fails is a store without options, whatever the memory ran out for.
TEST(PresetMemory, LeavesOptionsUnsetThatCannotBeRead) {
    const bool before = readOptions()[kKeyFramesVsPresets];
    ASSERT_TRUE(writeOption(kKeyFramesVsPresets, true));
    int failures = 0;
    for (int failAt = 0; failAt < 1000; ++failAt) {
        memory = {true, failAt, true, 0, 0};
        const auto options = readOptions();
        memory.counts = false;
        if (memory.calls <= failAt) {
            EXPECT_TRUE(options[kKeyFramesVsPresets]);
            break;
        }
        EXPECT_EQ(options, (std::array<bool, kOptionCount>{})) << "allocation " << failAt;
        ++failures;
    }
    EXPECT_GT(failures, 3);
    EXPECT_TRUE(writeOption(kKeyFramesVsPresets, before));
}

}  // namespace
}  // namespace lumiset
