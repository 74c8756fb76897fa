// What hosts do to plug-ins beside rendering one frame after the other.

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <memory>
#include <random>
#include <thread>

#include "adapters/frei0r/effect.h"
#include "adapters/frei0r/host_clock.h"
#include "tests/frei0r/frei0r_host.h"
#include "tests/frei0r/stand_in.h"
#include "tests/support/system.h"

namespace lumiset::frei0r {
namespace {

using test::heapInUse;

TEST(Hosting, TakesWhatNoHostShouldDo) {
    const PluginFile file(pluginPath("lumiset_outline"));
    EXPECT_NE(file.init(), 0);
    file.deinit();
    for (const int index : {-1, 8, 1000000}) {
        EXPECT_STREQ(file.parameter(index).name, "");
    }
    Use use(file, 8, 8);
    double value = 0.1;
    const Pixels source = testPicture(8, 8);
    const Pixels before = use.render(source, 0.0);
    for (const int index : {-1, 8, 1000000}) {
        file.setParamValue(use.instance(), &value, index);
        file.getParamValue(use.instance(), &value, index);
    }
    file.setParamValue(use.instance(), nullptr, 0);
    EXPECT_EQ(value, 0.1);
    EXPECT_EQ(use.render(source, 0.0), before);
    EXPECT_EQ(file.construct(0, 5), nullptr);
    EXPECT_EQ(file.construct(5, 0), nullptr);
    EXPECT_EQ(file.construct(0x60000000, 5), nullptr);
    Pixels result(64);
    file.update(nullptr, 0.0, source.data(), result.data());
    file.setParamValue(nullptr, &value, 0);
    file.getParamValue(nullptr, &value, 0);
    file.destruct(nullptr);
}

TEST(Hosting, LivesWithoutTheModule) {
    // A copy of its own, which nothing has been asked of before.
    const std::filesystem::path copy = testing::TempDir() + "lumiset_outline_alone" LUMISET_FREI0R_SUFFIX;
    std::filesystem::copy_file(pluginPath("lumiset_outline"), copy, std::filesystem::copy_options::overwrite_existing);
    test::setVariable("LUMISET_MODULE", "/nowhere/module.so");
    testing::internal::CaptureStderr();
    {
        const PluginFile file(copy);
        EXPECT_STREQ(file.info().name, "lumiset_outline");
        EXPECT_EQ(file.info().parameterCount, 0);
        EXPECT_STREQ(file.parameter(0).name, "");
        EXPECT_EQ(file.construct(8, 8), nullptr);
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "lumiset: There is no effects module at /nowhere/module.so.\n");
    test::setVariable("LUMISET_MODULE", nullptr);
    std::filesystem::remove(copy);
}

TEST(Hosting, RendersAnyFrameAnytimeInThreads) {
    constexpr int kFrames = 24;
    for (const char* name : {"lumiset_old_tv", "lumiset_background_generator", "lumiset_selective_focus"}) {
        SCOPED_TRACE(name);
        const PluginFile file(pluginPath(name));
        const Pixels source = testPicture(64, 36);
        std::vector<Pixels> expected;
        const auto handed = std::make_unique<Use>(file, 64, 36);
        for (int i = 0; i < kFrames; ++i) {
            expected.push_back(handed->render(source, i / 25.0));
        }
        std::vector<std::thread> threads;
        for (unsigned thread = 0; thread < 4; ++thread) {
            threads.emplace_back([&, thread] {
                Use own(file, 64, 36);
                std::vector<int> order(kFrames);
                for (int i = 0; i < kFrames; ++i) {
                    order[static_cast<std::size_t>(i)] = i;
                }
                std::shuffle(order.begin(), order.end(), std::mt19937(thread));
                for (const int i : order) {
                    EXPECT_EQ(own.render(source, i / 25.0), expected[static_cast<std::size_t>(i)]) << i;
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        for (const int i : {17, 3, 9, 0}) {
            std::thread([&] {
                EXPECT_EQ(handed->render(source, i / 25.0), expected[static_cast<std::size_t>(i)]) << i;
            }).join();
        }
        threads.clear();
        for (int thread = 0; thread < 4; ++thread) {
            threads.emplace_back([&] {
                for (int i = 0; i < kFrames; ++i) {
                    handed->setPreset("");
                    EXPECT_EQ(handed->render(source, i / 25.0), expected[static_cast<std::size_t>(i)]) << i;
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    }
}

TEST(Hosting, LoadsAndUnloadsWithoutGrowing) {
    const Pixels source = testPicture(32, 18);
    const auto once = [&] {
        const PluginFile file(pluginPath("lumiset_old_tv"));
        Use use(file, 32, 18);
        use.setPreset("Snow");
        return use.render(source, 1.0);
    };
    const Pixels expected = once();
    const auto repeat = [&](int times) {
        for (int i = 0; i < times; ++i) {
            ASSERT_EQ(once(), expected);
        }
    };
    repeat(20);  // The heap's own caches fill up.
    const std::size_t before = heapInUse();
    repeat(200);
    EXPECT_LE(heapInUse(), before + 2048);
}

TEST(Hosting, KeepsInstancesSmall) {
    if (heapInUse() == 0) {
        GTEST_SKIP() << "the heap does not tell";
    }
    const PluginFile file(pluginPath("lumiset_selective_tint"));
    const Pixels source = testPicture(320, 180);
    // What the plug-in and the heap set up once is none of an instance's.
    (void)Use(file, 8, 8).render(source, 0.0);
    const auto thousand = [&] {
        const std::size_t before = heapInUse();
        std::vector<std::unique_ptr<Use>> uses;
        for (int i = 0; i < 1000; ++i) {
            uses.push_back(std::make_unique<Use>(file, 320, 180));
            uses.back()->setPreset("Golden Glow");
        }
        for (int i = 0; i < 20; ++i) {
            (void)uses[static_cast<std::size_t>(i) * 50]->render(source, 0.0);
        }
        return heapInUse() - before;
    };
    const std::size_t start = heapInUse();
    EXPECT_LT(thousand() / 1000, 16384U) << "bytes an instance";
    const std::size_t before = heapInUse();
    EXPECT_LE(before, start + 65536) << "scratch memory goes with the last instance";
    thousand();
    EXPECT_LE(heapInUse(), before + 4096) << "bytes left by a thousand";
}

TEST(Hosting, SharesScratchMemoryAndThreadsAmongInstances) {
    const std::shared_ptr<IHostAllocator> scratch = scratchFor(320, 180);
    ASSERT_NE(scratch, nullptr);
    EXPECT_EQ(scratchFor(320, 180), scratch);
    EXPECT_NE(scratchFor(180, 320), scratch) << "another size";
    const std::shared_ptr<IHostParallel> threads = sharedThreads();
    ASSERT_NE(threads, nullptr);
    EXPECT_EQ(sharedThreads(), threads);
}

TEST(HostClock, KnowsTheFamilyThatCountsMilliseconds) {
    for (const char* file :
         {"/usr/lib/x86_64-linux-gnu/libavfilter.so.8", "libavfilter.so.10.1.100", "/opt/bin/ffmpeg", "ffplay",
          "/opt/ffmpeg-7/bin/ffprobe", "/opt/bin/ffmpeg_g", "/opt/bin/ffmpeg.exe", "avfilter-9.dll"}) {
        EXPECT_TRUE(countsMilliseconds(file)) << file;
    }
    for (const char* file : {"/usr/lib/x86_64-linux-gnu/mlt-7/libmltfrei0r.so", "/usr/bin/melt", "",
                             "/opt/ffmpeg/bin/melt", "/usr/lib/gstreamer-1.0/libgstfrei0r.so"}) {
        EXPECT_FALSE(countsMilliseconds(file)) << file;
    }
}

TEST(HostClock, ReadsTheTimesOfBothKindsOfHosts) {
    const PluginFile file(pluginPath("lumiset_old_tv"));
    const Pixels source = testPicture(64, 36);
    Use use(file, 64, 36);
    const Pixels expected = use.render(source, 0.52);
    Pixels result(source.size());
    updateAsFilterLibrary(file.update, use.instance(), 520.0, source.data(), result.data());
    EXPECT_EQ(result, expected);
    EXPECT_EQ(use.render(source, 0.52), expected) << "the same instance called from here again";
}

TEST(HostClock, CountsFramesThatHaveNoTime) {
    constexpr double kNoTimestamp = -9223372036854775808.0 / 12800.0 * 1000.0;
    HostClock clock;
    HostClock other;
    const void* const here = reinterpret_cast<const void*>(&heapInUse);
    EXPECT_EQ(clock.seconds(kNoTimestamp, here), 0.0);
    EXPECT_EQ(clock.seconds(std::nan(""), here), 0.04);
    EXPECT_EQ(clock.seconds(HUGE_VAL, here), 0.08);
    EXPECT_EQ(clock.seconds(1e9, here), 1e9);
    EXPECT_EQ(clock.seconds(-2.5, here), -2.5);
    EXPECT_EQ(clock.seconds(kNoTimestamp, nullptr), 0.12);
    EXPECT_EQ(other.seconds(kNoTimestamp, here), 0.0) << "each instance counts for itself";
}

}  // namespace
}  // namespace lumiset::frei0r
