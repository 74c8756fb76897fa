#include "platform/child_process.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <stdexcept>

namespace lumiset::platform {
namespace {

/// Reads until the writers are gone or the time is over; false for the latter.
bool readAll(int pipe, std::chrono::steady_clock::time_point end, std::string& text) {
    while (true) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
        pollfd wait{pipe, POLLIN, 0};
        const int ready = left.count() > 0 ? ::poll(&wait, 1, static_cast<int>(left.count())) : 0;
        if (ready == 0) {
            return false;
        }
        char buffer[4096];
        const ssize_t got = ready > 0 ? ::read(pipe, buffer, sizeof buffer) : -1;
        if (got > 0) {
            text.append(buffer, static_cast<std::size_t>(got));
        } else if (got == 0 || errno != EINTR) {
            return true;
        }
    }
}

}  // namespace

ChildEnd runProgram(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                    std::chrono::seconds limit) {
    int pipe[2];
    if (::pipe2(pipe, O_CLOEXEC) != 0) {
        throw std::runtime_error(std::string("No pipe to a program: ") + std::strerror(errno) + '.');
    }
    posix_spawn_file_actions_t files;
    ::posix_spawn_file_actions_init(&files);
    ::posix_spawn_file_actions_adddup2(&files, pipe[1], STDOUT_FILENO);
    std::vector<std::string> words(arguments);
    words.insert(words.begin(), program.string());
    std::vector<char*> argv;
    argv.reserve(words.size() + 1);
    for (std::string& word : words) {
        argv.push_back(word.data());
    }
    argv.push_back(nullptr);
    pid_t process = 0;
    const int error = ::posix_spawn(&process, program.c_str(), &files, nullptr, argv.data(), environ);
    ::posix_spawn_file_actions_destroy(&files);
    ::close(pipe[1]);
    if (error != 0) {
        ::close(pipe[0]);
        throw std::runtime_error(std::string("A program does not start: ") + std::strerror(error) + '.');
    }
    ChildEnd end;
    end.timedOut = !readAll(pipe[0], std::chrono::steady_clock::now() + limit, end.output);
    ::close(pipe[0]);
    if (end.timedOut) {
        ::kill(process, SIGKILL);
    }
    int status = 0;
    while (::waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    if (WIFSIGNALED(status)) {
        end.crash = ::strsignal(WTERMSIG(status));
    } else {
        end.status = WEXITSTATUS(status);
    }
    return end;
}

ChildEnd runThisProgram(const std::vector<std::string>& arguments, std::chrono::seconds limit) {
    return runProgram("/proc/self/exe", arguments, limit);
}

void crashQuietly() {
    const rlimit none{0, 0};
    ::setrlimit(RLIMIT_CORE, &none);
}

}  // namespace lumiset::platform
