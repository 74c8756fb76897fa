#include <functional>
#include <string>

#include "frame/frame_operations.h"
#include "tests/frame/operation_support.h"
#include "tests/support/host.h"

namespace lumiset::test {
namespace {

struct Case {
    std::string name;
    std::function<bool(const Frame&, Frame&, MemoryAllocator*)> run;
    bool masksToo;
};

const Case kCases[] = {
    {"FrameBlur", [](auto& src, auto& dst, auto* a) { return FrameBlur(src, dst, 5, 3, a, false); }, true},
    {"FrameDilate", [](auto& src, auto& dst, auto* a) { return FrameDilate(src, dst, 9, 7, a); }, true},
    {"FrameErode", [](auto& src, auto& dst, auto* a) { return FrameErode(src, dst, 8, 12, a); }, true},
    {"FrameSharpen", [](auto& src, auto& dst, auto* a) { return FrameSharpen(src, dst, a); }, false},
    {"ColorAdjust",
     [](auto& src, auto& dst, auto* a) { return ColorAdjust(src, dst, 0.6F, 0.5F, 0.4F, 0.2F, 0xFF, 0.7F, a); }, true},
};

TEST(FrameOperations, GiveEverythingBackAndKeepToTheirFrameWhenMemoryRunsOut) {
    for (const Case& c : kCases) {
        for (const std::int32_t format : kAllFormats) {
            if (!c.masksToo && AlphaIndex(format) < 0) {
                continue;
            }
            SCOPED_TRACE(testing::Message() << c.name << ", format " << format);
            std::mt19937 random(61);
            GuardedFrame src(37, 21, format);
            src.randomize(random);
            const std::vector<std::uint8_t> source = src.bytes();
            GuardedFrame expected(37, 21, format);
            ASSERT_TRUE(c.run(src.frame, expected.frame, nullptr));
            for (const bool inPlace : {false, true}) {
                failEachAllocation([&](IEffectHost* host) {
                    MemoryAllocator allocator(host);
                    GuardedFrame dst(37, 21, format);
                    if (inPlace) {
                        dst.restore(source);
                    }
                    const bool done = c.run(inPlace ? dst.frame : src.frame, dst.frame, &allocator);
                    EXPECT_TRUE(dst.guardsIntact());
                    EXPECT_EQ(src.bytes(), source);
                    if (done) {
                        EXPECT_TRUE(framesAgree(dst, expected));
                    }
                    return done;
                });
            }
        }
    }
}

}  // namespace
}  // namespace lumiset::test
