#include "tests/monitor/system.h"

#include <dlfcn.h>
#include <signal.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <thread>

#include "platform/process.h"

extern char** environ;

namespace lumiset::test {

void loadDriver() {
    if (::dlopen(LUMISET_TEST_DRIVER, RTLD_NOW | RTLD_LOCAL) == nullptr) {
        std::abort();
    }
}

IEffectLibrary* loadLibrary(const std::string& file) {
    void* const module = ::dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    void* const entry = module != nullptr ? ::dlsym(module, "GetEffectsLibrary") : nullptr;
    return entry != nullptr ? reinterpret_cast<IEffectLibrary* (*)()>(entry)() : nullptr;
}

void killThisProcess() {
    ::kill(::getpid(), SIGKILL);
    std::abort();
}

Child start(const std::vector<std::string>& command) {
    std::vector<char*> arguments;
    for (const std::string& argument : command) {
        arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    pid_t process = 0;
    return {::posix_spawn(&process, arguments[0], nullptr, nullptr, arguments.data(), environ) == 0 ? process : 0};
}

bool endsWell(const Child& child) {
    int status = -1;
    return ::waitpid(static_cast<pid_t>(child.process), &status, 0) == child.process && status == 0;
}

void kill(const Child& child) {
    ::kill(static_cast<pid_t>(child.process), SIGKILL);
    endsWell(child);
}

std::vector<std::uint64_t> monitors() {
    const std::string setting = std::string("XDG_RUNTIME_DIR=") + std::getenv("XDG_RUNTIME_DIR");
    std::vector<std::uint64_t> found;
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        std::string name;
        std::ifstream(entry.path() / "comm") >> name;
        std::ifstream environment(entry.path() / "environ");
        for (std::string variable; name == "GPUMonitor" && std::getline(environment, variable, '\0');) {
            const std::uint64_t process = std::strtoull(entry.path().filename().c_str(), nullptr, 10);
            if (variable == setting && platform::isRunning(platform::findProcess(process))) {
                found.push_back(process);
            }
        }
    }
    return found;
}

void endMonitors() {
    for (const std::uint64_t process : monitors()) {
        ::kill(static_cast<pid_t>(process), SIGTERM);
        ::kill(static_cast<pid_t>(process), SIGCONT);
    }
    for (int i = 0; i < 500 && !monitors().empty(); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

void useFolder(const std::string& folder) {
    std::filesystem::create_directories(folder + "/runtime");
    ::setenv("XDG_RUNTIME_DIR", (folder + "/runtime").c_str(), 1);
    ::setenv("XDG_CONFIG_HOME", (folder + "/config").c_str(), 1);
    const struct rlimit noDumps {};
    ::setrlimit(RLIMIT_CORE, &noDumps);
}

}  // namespace lumiset::test
