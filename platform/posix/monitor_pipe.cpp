// The pipe is a FIFO. Its bytes run together, so the messages of several hosts need marks: each is written in one
// piece, which the system keeps together up to PIPE_BUF bytes, as "NUMBER BIRTH NAMESPACE TEXT" and a NUL. The sender's
// process is told because a FIFO, unlike a named pipe of Windows, does not tell who wrote; with the namespace because
// the folder of the pipe may be shared between sandboxes that each number their processes on their own.

#include "platform/monitor_pipe.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <string>
#include <thread>

#include "platform/posix/descriptor.h"
#include "platform/posix/process_namespace.h"
#include "platform/posix/runtime_folder.h"
#include "platform/process.h"

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

constexpr std::string_view kFarewell = ";;;;3";
constexpr int kFarewellTime = 100;  // milliseconds

std::string messageBytes(std::string_view text) {
    static const Process s_process = thisProcess();
    static const std::uint64_t s_namespace = processNamespace(s_process.id);
    // A host may have forked since.
    const auto number = static_cast<std::uint64_t>(::getpid());
    const std::uint64_t birth = number == s_process.id ? s_process.born : findProcess(number).born;
    std::string bytes = std::to_string(number) + ' ' + std::to_string(birth) + ' ' + std::to_string(s_namespace) + ' ';
    bytes.append(text).push_back('\0');
    return bytes;
}

struct Farewell {
    std::string path;
    std::string bytes;
};
std::atomic<const Farewell*> g_farewell{nullptr};

/// Fails where nobody reads. What another user put in the pipe's place is not opened, nor what a link leads to.
Descriptor openPipe(const char* path) {
    Descriptor pipe(::open(path, O_WRONLY | O_NONBLOCK | O_CLOEXEC | O_NOFOLLOW));
    struct stat status {};
    if (pipe && (::fstat(pipe.get(), &status) != 0 || !S_ISFIFO(status.st_mode) || status.st_uid != ::geteuid())) {
        pipe.close();
    }
    return pipe;
}

bool isHalfFree(int pipe) {
    int used = 0;
    return ::ioctl(pipe, FIONREAD, &used) != 0 || 2 * used <= ::fcntl(pipe, F_GETPIPE_SZ);
}

}  // namespace

PipeAttempt sendToMonitor(std::string_view message, PipeRoom room) {
    const std::string path = monitorPipePath();
    if (!isPipeFolderGood(path.substr(0, path.rfind('/')))) {
        return PipeAttempt::kRefused;
    }
    const Descriptor pipe = openPipe(path.c_str());
    if (!pipe) {
        return PipeAttempt::kUnreachable;
    }
    if (room == PipeRoom::kHalf && !isHalfFree(pipe.get())) {
        return PipeAttempt::kBusy;
    }
    const std::string bytes = messageBytes(message);
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

std::string pipeRefusal() {
    const std::string path = monitorPipePath();
    return "Crashes in OpenGL are not noticed: the folder " + path.substr(0, path.rfind('/')) +
           " is a link, or others than you may write to it. Remove it.";
}

bool waitForMonitor(std::chrono::milliseconds time) {
    const auto end = std::chrono::steady_clock::now() + time;
    const Descriptor pipe = openPipe(monitorPipePath().c_str());
    while (pipe && !isHalfFree(pipe.get())) {
        if (std::chrono::steady_clock::now() >= end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        struct pollfd readable {
            pipe.get(), POLLOUT, 0
        };
        if (::poll(&readable, 1, 0) > 0 && (readable.revents & POLLERR) != 0) {
            return true;  // nobody reads any more; the next attempt will tell
        }
    }
    return static_cast<bool>(pipe);
}

void prepareFarewell() {
    static const Farewell s_farewell{monitorPipePath(), messageBytes(kFarewell)};
    g_farewell = &s_farewell;
}

void bidFarewell() noexcept {
    const Farewell* const farewell = g_farewell;
    const Descriptor pipe = farewell != nullptr ? openPipe(farewell->path.c_str()) : Descriptor(-1);
    struct pollfd writable {
        pipe.get(), POLLOUT, 0
    };
    if (pipe && ::poll(&writable, 1, kFarewellTime) > 0) {
        const ssize_t count = ::write(pipe.get(), farewell->bytes.data(), farewell->bytes.size());
        static_cast<void>(count);  // the process ends in any case
    }
}

}  // namespace lumiset::platform
