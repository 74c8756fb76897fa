#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "platform/crash_reports.h"
#include "tests/monitor/system.h"

namespace lumiset::test {

/// Hosts with a module and a monitor of their own, in a folder that goes with the test.
class CrashTest : public ::testing::Test {
protected:
    CrashTest() {
        std::filesystem::create_directories(folder / "alone");
        useFolder(folder.string());
        endMonitors();
        clearReports();
        std::filesystem::copy_file(module, moduleAlone);
    }
    ~CrashTest() override {
        endMonitors();
        clearReports();
        std::error_code error;
        std::filesystem::remove_all(folder, error);
    }

    static void clearReports() { EXPECT_TRUE(platform::removeCrashReports()); }

    /// The reports, once there are so many.
    static std::vector<platform::CrashReport> reportsOnceThereAre(std::size_t count) {
        for (int i = 0; i < 1200 && platform::crashReports().size() < count; ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(25));
        }
        return platform::crashReports();
    }

    [[nodiscard]] Child startHost(const std::filesystem::path& itsModule, const std::string& end, int frames,
                                  const char* name = "Tests") const {
        std::vector<std::string> command{program.string(), itsModule.string(), end, std::to_string(frames)};
        if (name != nullptr) {
            command.emplace_back(name);
        }
        return start(command);
    }
    [[nodiscard]] bool runHost(const std::filesystem::path& itsModule, const std::string& end, int frames,
                               const char* name = "Tests") const {
        return endsWell(startHost(itsModule, end, frames, name));
    }

    const std::filesystem::path module = LUMISET_TEST_MODULE;
    const std::filesystem::path program = LUMISET_TEST_HOST;
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("lumiset-crash-test-" + std::to_string(std::random_device()()));
    /// A copy without a monitor beside it.
    const std::filesystem::path moduleAlone = folder / "alone" / module.filename();
    const std::filesystem::path monitorAlone =
        folder / "alone" / std::filesystem::path(LUMISET_TEST_MONITOR).filename();
};

}  // namespace lumiset::test
