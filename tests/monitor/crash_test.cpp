// Hosts that a crash ends in the middle of a frame, through the module and the monitor as they are installed.

#include <algorithm>

#include "tests/gpu/fake_gpu_host.h"
#include "tests/monitor/crash_fixture.h"

namespace lumiset::test {
namespace {

constexpr std::uint32_t kEffects = 10;
constexpr std::uint32_t kOutline = 2;

/// What `InitGPU` answers, effect by effect.
std::vector<bool> effectsThatRenderInOpenGL() {
    loadDriver();
    resetFakeGL();
    FakeGPUHost gpu;
    test::ValueHost host = outlineHost(&gpu);
    IEffectLibrary* const library = loadLibrary(LUMISET_TEST_MODULE);
    std::vector<bool> able;
    for (std::uint32_t i = 0; i < kEffects; ++i) {
        IVideoGPUEffect* const effect = library->CreateEffect(i);
        GPUProgramSet status{};
        able.push_back(effect->InitGPU(&host, &gpu, &status, 0));
        effect->Release();
    }
    library->Release();
    return able;
}

TEST_F(CrashTest, KeepsTheEffectOffOpenGLUntilTheReportIsRemoved) {
    const std::vector<bool> all(kEffects, true);
    std::vector<bool> allButOutline = all;
    allButOutline[kOutline] = false;
    const struct {
        const char* end;
        const char* hostName;
        const char* reported;
    } rows[] = {
        {"kill", "Cutter; second edition", "Cutter; second edition"},
        {"fault", "", "Unknown"},
        {"kill", nullptr, "Unknown"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.end);
        EXPECT_EQ(effectsThatRenderInOpenGL(), all);
        // These do not crash, and a report of theirs would come before the one that is waited for.
        EXPECT_TRUE(runHost(module, "finish", 3));
        EXPECT_TRUE(runHost(module, "refuse", 3));
        EXPECT_FALSE(runHost(module, row.end, 3, row.hostName));
        const std::vector<platform::CrashReport> reports = reportsOnceThereAre(1);
        ASSERT_EQ(reports.size(), 1U);
        EXPECT_EQ(reports[0].host, row.reported);
        EXPECT_EQ(reports[0].effectLibrary, "Vantrel Lumiset V");
        EXPECT_EQ(reports[0].effect, "Outline");
        EXPECT_EQ(reports[0].guid.size(), 36U);
        EXPECT_EQ(effectsThatRenderInOpenGL(), allButOutline);
        clearReports();
    }
    EXPECT_EQ(effectsThatRenderInOpenGL(), all);
}

TEST_F(CrashTest, OfAnotherLibrarysEffectChangesNothing) {
    ASSERT_TRUE(platform::storeCrashReport({"1", "Host", "Another library", "Outline"}));
    ASSERT_TRUE(platform::storeCrashReport({"2", "Vantrel Lumiset V", "Outline", "Old"}));
    EXPECT_EQ(effectsThatRenderInOpenGL(), std::vector<bool>(kEffects, true));
    ASSERT_TRUE(platform::storeCrashReport({"3", "Caf\xE9", "Vantrel Lumiset V", "Old TV"}));
    EXPECT_EQ(std::ranges::count(effectsThatRenderInOpenGL(), false), 1) << "whatever encoding the host's name has";
}

TEST_F(CrashTest, IsStoredWithOthersUpToABound) {
    std::vector<platform::CrashReport> reports;
    for (int i = 0; i < 400; ++i) {
        reports.push_back({std::to_string(i), "Host", "Another library", "Outline"});
    }
    EXPECT_TRUE(platform::storeCrashReports(reports));
    EXPECT_TRUE(platform::storeCrashReport({"one more", "Host", "Another library", "Outline"}));
    EXPECT_EQ(platform::crashReports().size(), platform::kMostCrashReports);
    EXPECT_TRUE(platform::removeCrashReports());
    EXPECT_TRUE(platform::crashReports().empty());
}

TEST_F(CrashTest, IsFoundAmongManyHostsByOneMonitor) {
    constexpr int kHosts = 6;
    std::vector<Child> hosts;
    for (int i = 0; i < kHosts; ++i) {
        const bool crashes = i % 3 == 0;
        hosts.push_back(startHost(module, crashes ? "kill" : "finish", 200, crashes ? "Crashing" : "Lasting"));
    }
    for (int i = 0; i < kHosts; ++i) {
        EXPECT_EQ(endsWell(hosts[static_cast<std::size_t>(i)]), i % 3 != 0);
    }
    const std::vector<platform::CrashReport> reports = reportsOnceThereAre(2);
    ASSERT_EQ(reports.size(), 2U);
    EXPECT_EQ(reports[0].host + reports[1].host, "CrashingCrashing");
    EXPECT_EQ(monitors().size(), 1U) << "whoever started it";
    EXPECT_FALSE(endsWell(start({LUMISET_TEST_MONITOR}))) << "a second one has nothing to do";
}

TEST_F(CrashTest, GoesUnnoticedWithoutAMonitorAndFramesRenderAllTheSame) {
    EXPECT_TRUE(runHost(moduleAlone, "finish", 3)) << "no monitor is installed";
    EXPECT_TRUE(monitors().empty());

    // One that ends at once is not started for every frame.
    std::filesystem::copy_file(program, monitorAlone);
    EXPECT_TRUE(runHost(moduleAlone, "finish", 3));
    const std::filesystem::path starts = monitorAlone.parent_path() / "starts";
    for (int i = 0; i < 1200 && (!std::filesystem::exists(starts) || std::filesystem::is_empty(starts)); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(25));
    }
    EXPECT_EQ(std::filesystem::file_size(starts), std::string("started").size());

    // One that runs and does not listen is not started again.
    std::filesystem::remove(starts);
    const Child hanging = start({monitorAlone.string(), "hang"});
    EXPECT_TRUE(runHost(moduleAlone, "finish", 3));
    EXPECT_FALSE(std::filesystem::exists(starts));
    kill(hanging);
    EXPECT_TRUE(platform::crashReports().empty());
}

}  // namespace
}  // namespace lumiset::test
