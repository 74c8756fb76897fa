#include "platform/monitor_process.h"

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "platform/posix/file_bytes.h"
#include "platform/posix/process_namespace.h"
#include "platform/posix/runtime_folder.h"
#include "platform/process.h"
#include "platform/text.h"

namespace lumiset::platform {
namespace {

constexpr const char* kName = "GPUMonitor";

std::string procFile(std::uint64_t process, const char* file) {
    return readBytes("/proc/" + std::to_string(process) + '/' + file, 4U << 20U).value_or("");
}

/// What the process found in its environment when it started, or null. `environment` is the whole of it, each entry
/// ended by a NUL.
const char* variableIn(const std::string& environment, std::string_view name) {
    for (std::size_t at = 0; at < environment.size(); at = environment.find('\0', at) + 1) {
        if (environment.compare(at, name.size(), name) == 0 && environment[at + name.size()] == '=') {
            return environment.c_str() + at + name.size() + 1;
        }
        if (environment.find('\0', at) == std::string::npos) {
            break;
        }
    }
    return nullptr;
}

/// A monitor of this user whose pipe lies in our folder. Others of the user's processes may have another folder, in a
/// container for one; their monitor hears nothing from here.
bool servesHere(std::uint64_t process) {
    struct stat status {};
    return ::stat(("/proc/" + std::to_string(process)).c_str(), &status) == 0 && status.st_uid == ::geteuid() &&
           isRunning(findProcess(process)) && processNamespace(process) == processNamespace(thisProcess().id) &&
           runtimeFolder(variableIn(procFile(process, "environ"), "XDG_RUNTIME_DIR")) ==
               runtimeFolder(std::getenv("XDG_RUNTIME_DIR"));
}

/// How a program starts that is nobody's child and shares nothing with this process.
class CleanStart {
public:
    CleanStart() {
        ::posix_spawn_file_actions_init(&m_files);
        ::posix_spawn_file_actions_addopen(&m_files, 0, "/dev/null", O_RDWR, 0);
        ::posix_spawn_file_actions_adddup2(&m_files, 0, 1);
        ::posix_spawn_file_actions_adddup2(&m_files, 0, 2);
        ::posix_spawn_file_actions_addclosefrom_np(&m_files, 3);
        ::posix_spawn_file_actions_addchdir_np(&m_files, "/");
        ::posix_spawnattr_init(&m_attributes);
        ::posix_spawnattr_setflags(&m_attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
        sigset_t signals;
        ::sigemptyset(&signals);
        ::posix_spawnattr_setsigmask(&m_attributes, &signals);
        ::sigfillset(&signals);
        ::posix_spawnattr_setsigdefault(&m_attributes, &signals);
    }
    CleanStart(const CleanStart&) = delete;
    CleanStart& operator=(const CleanStart&) = delete;
    ~CleanStart() {
        ::posix_spawn_file_actions_destroy(&m_files);
        ::posix_spawnattr_destroy(&m_attributes);
    }

    [[nodiscard]] bool run(char* path) const {
        char* arguments[] = {path, nullptr};
        pid_t process = 0;
        return ::posix_spawn(&process, path, &m_files, &m_attributes, arguments, environ) == 0;
    }

private:
    posix_spawn_file_actions_t m_files{};
    posix_spawnattr_t m_attributes{};
};

}  // namespace

const wchar_t* const kMonitorProgram = L"GPUMonitor";

std::wstring modulePath() {
    Dl_info info{};
    if (::dladdr(reinterpret_cast<const void*>(&modulePath), &info) == 0 || info.dli_fname == nullptr) {
        return {};
    }
    // The loader's name for it may be relative, or a link to where the module was installed.
    const std::unique_ptr<char, void (*)(void*)> path(::realpath(info.dli_fname, nullptr), std::free);
    return path != nullptr ? fromUtf8(path.get()).value_or(L"") : L"";
}

bool isProgram(const std::wstring& path) {
    const std::optional<std::string> name = toUtf8(path);
    struct stat status {};
    return name && ::stat(name->c_str(), &status) == 0 && S_ISREG(status.st_mode) && ::access(name->c_str(), X_OK) == 0;
}

bool isMonitorListed() {
    const std::unique_ptr<DIR, int (*)(DIR*)> processes(::opendir("/proc"), ::closedir);
    if (processes == nullptr) {
        return false;
    }
    const std::string wanted = std::string(kName) + '\n';
    while (const struct dirent* entry = ::readdir(processes.get())) {
        const char* end = entry->d_name + std::strlen(entry->d_name);
        std::uint64_t process = 0;
        if (std::from_chars(entry->d_name, end, process).ptr == end && procFile(process, "comm") == wanted &&
            servesHere(process)) {
            return true;
        }
    }
    return false;
}

bool startProgram(const std::wstring& path) {
    const std::optional<std::string> name = toUtf8(path);
    if (!name) {
        return false;
    }
    std::string program = *name;
    const CleanStart start;
    // Started by a process in between that ends at once, the program becomes a child of the system's first process,
    // which asks for it when it ends; a child of this process would stay in the list until the host ends. The fork
    // that runs no handlers of the host's is enough for a process that does nothing else.
    const pid_t between = ::_Fork();
    if (between == 0) {
        ::_exit(start.run(program.data()) ? 0 : 1);
    }
    if (between < 0) {
        return false;
    }
    int status = 0;
    pid_t ended = 0;
    do {
        ended = ::waitpid(between, &status, 0);
    } while (ended < 0 && errno == EINTR);
    // A host that asks for any child of its own may have been quicker; then nothing tells of a failure.
    return ended < 0 || (WIFEXITED(status) && WEXITSTATUS(status) == 0);
}

}  // namespace lumiset::platform
