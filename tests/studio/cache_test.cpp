#include "apps/studio/core/frame_cache.h"

#include <gtest/gtest.h>

namespace lumiset::studio {
namespace {

using Frames = std::vector<std::int64_t>;

void put(FrameCache& cache, const char* series, std::int64_t frame, std::size_t bytes) {
    cache.put(FrameKey{series, frame}, std::make_shared<const std::int64_t>(frame), bytes);
}

TEST(FrameCacheTest, ForgetsTheLongestUnusedWhereThereIsNoRoom) {
    FrameCache cache(100);
    put(cache, "a", 1, 40);
    put(cache, "a", 2, 40);
    ASSERT_NE(cache.find<std::int64_t>({"a", 1}), nullptr);  // now the other one is the oldest
    put(cache, "b", 1, 30);
    EXPECT_EQ(cache.find<std::int64_t>({"a", 2}), nullptr);
    EXPECT_EQ(cache.framesOf("a"), Frames{1});
    EXPECT_EQ(cache.framesOf("b"), Frames{1});
    EXPECT_EQ(cache.bytes(), 70U);

    put(cache, "a", 1, 100);  // in place of the smaller one, and of everything else
    EXPECT_EQ(cache.bytes(), 100U);
    EXPECT_TRUE(cache.framesOf("b").empty());
    put(cache, "a", 3, 101);
    EXPECT_EQ(cache.framesOf("a"), Frames{1}) << "what never fits drives nothing out";
}

TEST(FrameCacheTest, TellsTheFramesOfASeriesInOrder) {
    FrameCache cache(100);
    for (const std::int64_t frame : {7, 3, 12}) {
        put(cache, "s", frame, 1);
    }
    put(cache, "r", 5, 1);
    put(cache, "s/2", 4, 1);
    EXPECT_EQ(cache.framesOf("s"), (Frames{3, 7, 12}));
    const auto kept = cache.find<std::int64_t>({"s", 7});
    cache.clear();
    EXPECT_EQ(cache.bytes(), 0U);
    ASSERT_NE(kept, nullptr);
    EXPECT_EQ(*kept, 7) << "who has a picture keeps it";
}

}  // namespace
}  // namespace lumiset::studio
