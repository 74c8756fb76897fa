#pragma once

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace lumiset::test {

/// A folder that is empty at first and gone with the object.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "lumiset_test_XXXXXX").string();
        if (::mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error("no temporary folder");
        }
        m_path = name;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::permissions(m_path, std::filesystem::perms::owner_all, ignored);
        std::filesystem::remove_all(m_path, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    [[nodiscard]] std::string operator/(const std::string& name) const { return (m_path / name).string(); }
    [[nodiscard]] const std::filesystem::path& path() const { return m_path; }
    /// Number of files and folders in it.
    [[nodiscard]] std::ptrdiff_t entries() const {
        return std::distance(std::filesystem::directory_iterator(m_path), std::filesystem::directory_iterator());
    }

private:
    std::filesystem::path m_path;
};

inline std::string contentsOf(const std::string& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

inline void writeFile(const std::string& file, const std::string& contents) {
    std::ofstream(file, std::ios::binary) << contents;
}

/// Sets an environment variable for programs started meanwhile.
class WithEnvironment {
public:
    WithEnvironment(const char* name, const std::string& value) : m_name(name) {
        if (const char* before = std::getenv(name)) {
            m_before = before;
        }
        ::setenv(name, value.c_str(), 1);
    }
    ~WithEnvironment() { m_before ? ::setenv(m_name, m_before->c_str(), 1) : ::unsetenv(m_name); }
    WithEnvironment(const WithEnvironment&) = delete;
    WithEnvironment& operator=(const WithEnvironment&) = delete;

private:
    const char* m_name;
    std::optional<std::string> m_before;
};

/// Hides the OpenGL drivers from programs started meanwhile.
struct WithoutOpenGL {
    WithEnvironment drivers{"__EGL_VENDOR_LIBRARY_FILENAMES", "/dev/null"};
};

/// Settings and a crash monitor of its own for programs started meanwhile.
struct OwnSettings {
    OwnSettings() { std::filesystem::create_directory(folder / "runtime"); }
    TemporaryFolder folder;
    WithEnvironment config{"XDG_CONFIG_HOME", folder.path().string()};
    WithEnvironment runtime{"XDG_RUNTIME_DIR", folder / "runtime"};
};

/// True once the process handles that signal itself, rather than ending by it.
inline bool catches(pid_t process, int signal) {
    const std::string status = contentsOf("/proc/" + std::to_string(process) + "/status");
    const std::size_t at = status.find("SigCgt:");
    return at != std::string::npos && (std::stoull(status.substr(at + 7), nullptr, 16) >> (signal - 1) & 1U) != 0;
}

/// Sends the signal that many milliseconds after the process has come to handle it, half a minute at most.
inline void interrupt(pid_t process, int signal, int milliseconds = 0) {
    for (int i = 0; i < 3000 && !catches(process, signal); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
    ::kill(process, signal);
}

struct RunResult {
    int status = -1;  ///< exit status; 1000 + signal for a program that a signal ended
    std::string out;
    std::string err;
};

/// Runs the built `lumiset`, five minutes at most, with standard input from the file `input`. `meanwhile` is given the
/// process while it runs.
inline RunResult runLumiset(std::vector<std::string> arguments, const std::string& input = "/dev/null",
                            const std::function<void(pid_t)>& meanwhile = {}) {
    const TemporaryFolder folder;
    const std::string out = folder / "out";
    const std::string err = folder / "err";
    posix_spawn_file_actions_t files;
    ::posix_spawn_file_actions_init(&files);
    ::posix_spawn_file_actions_addopen(&files, 0, input.c_str(), O_RDONLY, 0);
    ::posix_spawn_file_actions_addopen(&files, 1, out.c_str(), O_WRONLY | O_CREAT, 0600);
    ::posix_spawn_file_actions_addopen(&files, 2, err.c_str(), O_WRONLY | O_CREAT, 0600);
    arguments.insert(arguments.begin(), LUMISET_PROGRAM);
    std::vector<char*> argv;
    for (std::string& argument : arguments) {
        argv.push_back(argument.data());
    }
    argv.push_back(nullptr);
    // What runs in the background of a shell ignores interrupts, and so would its children.
    sigset_t ending;
    ::sigemptyset(&ending);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        ::sigaddset(&ending, signal);
    }
    posix_spawnattr_t attributes;
    ::posix_spawnattr_init(&attributes);
    ::posix_spawnattr_setsigdefault(&attributes, &ending);
    ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
    pid_t process = 0;
    const int error = ::posix_spawn(&process, LUMISET_PROGRAM, &files, &attributes, argv.data(), environ);
    ::posix_spawnattr_destroy(&attributes);
    ::posix_spawn_file_actions_destroy(&files);
    RunResult result;
    if (error != 0) {
        result.err = "the program does not start";
        return result;
    }
    if (meanwhile) {
        meanwhile(process);
    }
    int status = 0;
    for (int waited = 0; ::waitpid(process, &status, WNOHANG) == 0; ++waited) {
        if (waited == 60000) {
            ::kill(process, SIGKILL);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
    result.out = contentsOf(out);
    result.err = contentsOf(err);
    return result;
}

}  // namespace lumiset::test
