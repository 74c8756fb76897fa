#include "platform/posix/dialog_program.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

#include "platform/posix/descriptor.h"

namespace lumiset::platform {

int runDialogProgram(const std::vector<std::string>& command, std::string& output) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        return -1;
    }
    const Descriptor reading(ends[0]);
    Descriptor writing(ends[1]);

    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (const std::string& argument : command) {
        arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t files;
    ::posix_spawn_file_actions_init(&files);
    ::posix_spawn_file_actions_addopen(&files, 0, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_adddup2(&files, writing.get(), 1);
    ::posix_spawn_file_actions_addopen(&files, 2, "/dev/null", O_WRONLY, 0);  // toolkits chatter
    pid_t process = 0;
    const int error = ::posix_spawnp(&process, arguments[0], &files, nullptr, arguments.data(), environ);
    ::posix_spawn_file_actions_destroy(&files);
    writing.close();
    if (error != 0) {
        return -1;
    }

    std::string text;
    char block[4096];
    for (ssize_t count = 0; (count = ::read(reading.get(), block, sizeof block)) != 0;) {
        if (count < 0 && errno != EINTR) {
            break;
        }
        text.append(block, count > 0 && text.size() < 65536 ? static_cast<std::size_t>(count) : 0);
    }
    int status = 0;
    pid_t waited = 0;
    do {
        waited = ::waitpid(process, &status, 0);
    } while (waited < 0 && errno == EINTR);
    output = text.substr(0, text.find('\n'));
    return waited == process && WIFEXITED(status) && WEXITSTATUS(status) != 127 ? WEXITSTATUS(status) : -1;
}

}  // namespace lumiset::platform
