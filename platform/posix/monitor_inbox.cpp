// See monitor_pipe.cpp for what the bytes in the pipe look like. The process that holds the FIFO's lock is the one that
// listens.

#include "platform/monitor_inbox.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <climits>
#include <optional>
#include <utility>

#include "platform/posix/descriptor.h"
#include "platform/posix/runtime_folder.h"

namespace lumiset::platform {
namespace {

constexpr int kLeavingSignals[] = {SIGTERM, SIGINT, SIGHUP};

volatile sig_atomic_t g_leaving = 0;

std::optional<MonitorMessage> messageIn(const std::string& bytes) {
    MonitorMessage message{};
    const auto [end, error] = std::from_chars(bytes.data(), bytes.data() + bytes.size(), message.sender);
    if (error != std::errc() || *end != ' ') {
        return std::nullopt;
    }
    message.text.assign(end + 1, bytes.data() + bytes.size());
    return message;
}

class Fifo final : public MonitorInbox {
public:
    Fifo(Descriptor pipe, std::string path) : m_pipe(std::move(pipe)), m_path(std::move(path)) {
        // The signals come while the process waits for messages, and at no other time.
        struct sigaction action {};
        action.sa_handler = [](int /*signal*/) { g_leaving = 1; };
        sigset_t signals;
        ::sigemptyset(&signals);
        for (const int signal : kLeavingSignals) {
            ::sigaction(signal, &action, nullptr);
            ::sigaddset(&signals, signal);
        }
        ::pthread_sigmask(SIG_BLOCK, &signals, &m_waitingMask);
        for (const int signal : kLeavingSignals) {
            ::sigdelset(&m_waitingMask, signal);
        }
    }
    ~Fifo() override {
        if (isInPlace()) {
            ::unlink(m_path.c_str());
        }
    }

    /// False when hosts no longer find this pipe under its name: the user has logged out, for one.
    [[nodiscard]] bool isInPlace() const {
        struct stat here {};
        struct stat there {};
        return ::fstat(m_pipe.get(), &here) == 0 && ::lstat(m_path.c_str(), &there) == 0 &&
               here.st_dev == there.st_dev && here.st_ino == there.st_ino;
    }

    bool receive(std::chrono::milliseconds time, std::vector<MonitorMessage>& messages) override {
        const auto nanoseconds = std::chrono::nanoseconds(time % std::chrono::seconds(1)).count();
        const struct timespec timeout {
            static_cast<time_t>(time / std::chrono::seconds(1)), static_cast<long>(nanoseconds)
        };
        struct pollfd readable {
            m_pipe.get(), POLLIN, 0
        };
        const int ready = ::ppoll(&readable, 1, &timeout, &m_waitingMask);
        if (g_leaving != 0 || (ready < 0 && errno != EINTR)) {
            return false;
        }
        if (ready > 0) {
            readAll(messages);
            return true;
        }
        return isInPlace();
    }

private:
    void readAll(std::vector<MonitorMessage>& messages) {
        char block[65536];
        for (ssize_t count = 0; (count = ::read(m_pipe.get(), block, sizeof block)) > 0;) {
            m_bytes.append(block, static_cast<std::size_t>(count));
            std::size_t begin = 0;
            for (std::size_t end = 0; (end = m_bytes.find('\0', begin)) != std::string::npos; begin = end + 1) {
                if (std::optional<MonitorMessage> message = messageIn(m_bytes.substr(begin, end - begin))) {
                    messages.push_back(std::move(*message));
                }
            }
            m_bytes.erase(0, begin);
            if (m_bytes.size() > PIPE_BUF) {
                m_bytes.clear();  // no message is that long
            }
        }
    }

    Descriptor m_pipe;
    std::string m_path;
    std::string m_bytes;  ///< of a message that has not come to its end
    sigset_t m_waitingMask{};
};

}  // namespace

std::unique_ptr<MonitorInbox> openMonitorInbox() {
    const std::string path = monitorPipePath();
    const std::string folder = path.substr(0, path.rfind('/'));
    ::mkdir(folder.c_str(), 0700);  // there already, but for the one under /tmp
    if (!isPrivateFolder(folder)) {
        return nullptr;
    }
    // The one that was there may be taken away before the lock is held.
    for (int attempt = 0; attempt < 10; ++attempt) {
        struct stat status {};
        if (::lstat(path.c_str(), &status) == 0 &&
            (!S_ISFIFO(status.st_mode) || status.st_uid != ::geteuid() || (status.st_mode & 077) != 0)) {
            ::unlink(path.c_str());
        }
        if (::mkfifo(path.c_str(), 0600) != 0 && errno != EEXIST) {
            return nullptr;
        }
        // Open for writing too: without a writer the pipe would count as ended.
        Descriptor pipe(::open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC | O_NOFOLLOW));
        if (!pipe || ::flock(pipe.get(), LOCK_EX | LOCK_NB) != 0) {
            return nullptr;
        }
        auto fifo = std::make_unique<Fifo>(std::move(pipe), path);
        if (fifo->isInPlace()) {
            return fifo;
        }
    }
    return nullptr;
}

}  // namespace lumiset::platform
