#include "platform/interruption.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <initializer_list>
#include <system_error>
#include <thread>
#include <utility>

namespace lumiset::platform {
namespace {

int g_pipe[2] = {-1, -1};  ///< from the handler to the thread

void passOn(int signal) {
    const int error = errno;
    const auto number = static_cast<char>(signal);
    const ssize_t count = ::write(g_pipe[1], &number, 1);
    static_cast<void>(count);  // a full pipe has told enough
    errno = error;
}

}  // namespace

void onInterruption(void (*note)(int signal)) {
    struct sigaction action {};
    action.sa_handler = note;
    ::sigemptyset(&action.sa_mask);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction former {};
        // A signal that the caller ignores, as nohup does with SIGHUP, stays ignored.
        if (::sigaction(number, nullptr, &former) == 0 && former.sa_handler != SIG_IGN) {
            ::sigaction(number, &action, nullptr);
        }
    }
    ::signal(SIGPIPE, SIG_IGN);
}

void onInterruptionInThread(std::function<void(int signal)> note) {
    if (::pipe2(g_pipe, O_CLOEXEC) != 0 || ::fcntl(g_pipe[1], F_SETFL, O_NONBLOCK) != 0) {
        throw std::system_error(errno, std::generic_category());
    }
    std::thread([note = std::move(note)] {
        char number = 0;
        ssize_t count = 0;
        while ((count = ::read(g_pipe[0], &number, 1)) > 0 || (count < 0 && errno == EINTR)) {
            if (count > 0) {
                note(number);
            }
        }
    }).detach();
    onInterruption(&passOn);
}

}  // namespace lumiset::platform
