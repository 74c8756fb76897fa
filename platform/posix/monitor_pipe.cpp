// The pipe is a FIFO. Its bytes run together, so the messages of several hosts need marks: each is written in one
// piece, which the system keeps together up to PIPE_BUF bytes, as the sender's process number, a blank, the text and a
// NUL. The number is there because a FIFO, unlike a named pipe of Windows, does not tell who wrote.

#include "platform/monitor_pipe.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <string>

#include "platform/posix/descriptor.h"
#include "platform/posix/runtime_folder.h"

namespace lumiset::platform {
namespace {

/// Keeps the broken pipe signal from a host that may not expect it, for this thread and the length of a write.
class WithoutSigpipe {
public:
    WithoutSigpipe() {
        sigset_t pending;
        ::sigpending(&pending);
        m_wasPending = ::sigismember(&pending, SIGPIPE) == 1;
        ::sigemptyset(&m_sigpipe);
        ::sigaddset(&m_sigpipe, SIGPIPE);
        ::pthread_sigmask(SIG_BLOCK, &m_sigpipe, &m_before);
    }
    WithoutSigpipe(const WithoutSigpipe&) = delete;
    WithoutSigpipe& operator=(const WithoutSigpipe&) = delete;
    ~WithoutSigpipe() {
        const int error = errno;
        if (m_broken && !m_wasPending) {
            const struct timespec now {};
            while (::sigtimedwait(&m_sigpipe, nullptr, &now) < 0 && errno == EINTR) {
            }
        }
        ::pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
        errno = error;
    }

    void setBroken() { m_broken = true; }

private:
    sigset_t m_sigpipe{};
    sigset_t m_before{};
    bool m_wasPending = false;
    bool m_broken = false;
};

/// Fails where nobody reads. What another user put in the pipe's place is not opened, nor what a link leads to.
Descriptor openPipe() {
    Descriptor pipe(::open(monitorPipePath().c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC | O_NOFOLLOW));
    struct stat status {};
    if (pipe && (::fstat(pipe.get(), &status) != 0 || !S_ISFIFO(status.st_mode) || status.st_uid != ::geteuid())) {
        pipe.close();
    }
    return pipe;
}

}  // namespace

PipeAttempt sendToMonitor(std::string_view message) {
    const Descriptor pipe = openPipe();
    if (!pipe) {
        return PipeAttempt::kUnreachable;
    }
    std::string bytes = std::to_string(::getpid());
    bytes.append(" ").append(message).push_back('\0');
    if (bytes.size() > PIPE_BUF) {
        return PipeAttempt::kFailed;
    }
    WithoutSigpipe withoutSigpipe;
    ssize_t count = 0;
    do {
        count = ::write(pipe.get(), bytes.data(), bytes.size());
    } while (count < 0 && errno == EINTR);
    if (count < 0 && errno == EPIPE) {
        withoutSigpipe.setBroken();
    }
    if (count < 0 && errno == EAGAIN) {
        return PipeAttempt::kBusy;
    }
    return count == static_cast<ssize_t>(bytes.size()) ? PipeAttempt::kSent : PipeAttempt::kFailed;
}

bool waitForMonitor(std::chrono::milliseconds time) {
    const Descriptor pipe = openPipe();
    if (!pipe) {
        return false;
    }
    struct pollfd writable {
        pipe.get(), POLLOUT, 0
    };
    const int ready = ::poll(&writable, 1, static_cast<int>(time.count()));
    return ready > 0 || (ready < 0 && errno == EINTR);
}

}  // namespace lumiset::platform
