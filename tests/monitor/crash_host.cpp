// A host with a driver that can be made to fail: renders outlines through a module in OpenGL and may not come to the
// end.
//   crash_host MODULE finish|refuse|kill|fault|stop FRAMES [HOST-NAME]
//   crash_host hang       does nothing for a minute
//   crash_host            notes its start in the file "starts" beside it: a monitor that ends at once

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <thread>

#include "platform/monitor_pipe.h"
#include "tests/gpu/fake_gpu_host.h"
#include "tests/monitor/system.h"

namespace lumiset::test {
namespace {

constexpr std::uint32_t kOutline = 2;

/// A crash is noticed once the monitor that an earlier frame started has its pipe, and a loaded machine may take its
/// time for that.
void awaitMonitor() {
    constexpr std::chrono::milliseconds kStep{10};
    for (std::chrono::milliseconds waited{0}; waited < std::chrono::seconds(60); waited += kStep) {
        if (platform::sendToMonitor("", platform::PipeRoom::kAll) != platform::PipeAttempt::kUnreachable) {
            return;
        }
        std::this_thread::sleep_for(kStep);
    }
}

/// What happens in the last frame.
void prepareEnd(const std::string& end, FakeGPUHost& gpu) {
    if (end == "refuse") {
        gpu.failAt = gpu.creations;
    } else if (end == "kill") {
        fakeGL().onCall = [](const std::string& call) {
            if (call.rfind("CreateTexture", 0) == 0) {
                killThisProcess();
            }
        };
    } else if (end == "stop") {
        fakeGL().onCall = [](const std::string& call) {
            if (call.rfind("CreateTexture", 0) == 0) {
                std::this_thread::sleep_for(std::chrono::minutes(1));
            }
        };
    } else if (end == "fault") {
        fakeGL().onCall = [](const std::string& call) {
            if (call.rfind("UseProgramObjectARB", 0) == 0) {  // inside the driver's own function
                volatile int* const nowhere = nullptr;
                *nowhere = 1;
            }
        };
    }
}

int host(const std::string& module, const std::string& end, int frames, const char* name) {
    loadDriver();
    resetFakeGL();
    IEffectLibrary* const library = loadLibrary(module);
    if (library == nullptr) {
        return 2;
    }
    FakeGPUHost gpu;
    test::ValueHost effectHost = outlineHost(&gpu);
    effectHost.name = name;
    GPUTexture source = gpu.texture("source", 60, 40);
    GPUTexture destination = gpu.texture("destination", 60, 40);
    IVideoGPUEffect* const outline = library->CreateEffect(kOutline);
    bool good = true;
    const auto begin = std::chrono::steady_clock::now();
    for (int frame = 1; frame <= frames; ++frame) {
        const bool last = frame == frames;
        if (last) {
            if (frame > 1 && (end == "kill" || end == "fault")) {
                awaitMonitor();
            }
            prepareEnd(end, gpu);
        }
        const bool rendered = outline->ProcessFrameGPU(0, &effectHost, &gpu, &source, nullptr, &destination, nullptr);
        good = good && rendered != (last && end == "refuse");
        fakeGL().calls.clear();
    }
    const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - begin;
    std::printf("%.4f ms a frame\n", time.count() / frames);
    outline->Release();
    library->Release();
    return good ? 0 : 1;
}

}  // namespace
}  // namespace lumiset::test

int main(int argc, char** argv) {
    if (argc >= 4) {
        return lumiset::test::host(argv[1], argv[2], std::atoi(argv[3]), argc > 4 ? argv[4] : nullptr);
    }
    if (argc == 2) {
        std::this_thread::sleep_for(std::chrono::minutes(1));
        return 0;
    }
    const std::string program = argv[0];
    std::ofstream(program.substr(0, program.find_last_of("/\\") + 1) + "starts", std::ios::app) << "started";
    return 0;
}
