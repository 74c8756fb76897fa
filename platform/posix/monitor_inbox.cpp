// See monitor_pipe.cpp for what the bytes in the pipe look like. The process that holds the FIFO's lock is the one that
// listens.

#include "platform/monitor_inbox.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <climits>
#include <optional>
#include <utility>

#include "platform/posix/descriptor.h"
#include "platform/posix/monitor_message.h"
#include "platform/posix/process_namespace.h"
#include "platform/posix/runtime_folder.h"

namespace lumiset::platform {
namespace {

/// How often it is looked for what the system does not tell of: how processes are, and the pipe's place.
constexpr std::chrono::milliseconds kLookTime{250};
constexpr std::chrono::milliseconds kPlaceTime{2000};

constexpr int kLeavingSignals[] = {SIGTERM, SIGINT, SIGHUP};

volatile sig_atomic_t g_leaving = 0;

std::optional<std::uint64_t> takeNumber(std::string_view& text) {
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end == text.data() + text.size() || *end != ' ') {
        return std::nullopt;
    }
    text.remove_prefix(static_cast<std::size_t>(end - text.data()) + 1);
    return number;
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
        // The name's last link going, and the name becoming another.
        ::inotify_add_watch(m_folderNews.get(), m_path.c_str(), IN_ATTRIB | IN_MOVE_SELF | IN_DELETE_SELF);
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

    bool receive(std::chrono::milliseconds time, const std::vector<Process>& watched,
                 std::vector<MonitorMessage>& messages) override {
        std::vector<Descriptor> processes;
        std::vector<struct pollfd> waiting{{m_pipe.get(), POLLIN, 0}, {m_folderNews.get(), POLLIN, 0}};
        for (const Process& process : watched) {
            processes.emplace_back(static_cast<int>(::syscall(SYS_pidfd_open, static_cast<pid_t>(process.id), 0)));
            waiting.push_back({processes.back().get(), POLLIN, 0});
            if (!isRunning(process)) {
                time = time.zero();  // its number may be another's by now
            } else if (!processes.back()) {
                time = std::min(time, kLookTime);  // an old system, or no descriptor to be had
            }
        }
        if (!m_folderNews) {
            time = std::min(time, kPlaceTime);
        }
        const auto nanoseconds = std::chrono::nanoseconds(time % std::chrono::seconds(1)).count();
        const struct timespec timeout {
            static_cast<time_t>(time / std::chrono::seconds(1)), static_cast<long>(nanoseconds)
        };
        const int ready = ::ppoll(waiting.data(), waiting.size(), &timeout, &m_waitingMask);
        if (g_leaving != 0 || (ready < 0 && errno != EINTR)) {
            return false;
        }
        readAll(messages);
        if (!messages.empty()) {
            return true;
        }
        char news[4096];
        while (m_folderNews && ::read(m_folderNews.get(), news, sizeof news) > 0) {
        }
        return isInPlace();
    }

private:
    void readAll(std::vector<MonitorMessage>& messages) {
        char block[65536];
        ssize_t count = 0;
        // As much as the largest pipe holds, whoever goes on writing.
        for (int i = 0; i < 16 && (count = ::read(m_pipe.get(), block, sizeof block)) > 0; ++i) {
            m_bytes.append(block, static_cast<std::size_t>(count));
            std::size_t begin = 0;
            for (std::size_t end = 0; (end = m_bytes.find('\0', begin)) != std::string::npos; begin = end + 1) {
                if (auto message = messageIn(std::string_view(m_bytes).substr(begin, end - begin), m_namespace)) {
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
    Descriptor m_folderNews{::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)};
    const std::uint64_t m_namespace = processNamespace(thisProcess().id);
    std::string m_bytes;  ///< of a message that has not come to its end
    sigset_t m_waitingMask{};
};

}  // namespace

std::optional<MonitorMessage> messageIn(std::string_view bytes, std::uint64_t ourNamespace) {
    const std::optional<std::uint64_t> id = takeNumber(bytes);
    const std::optional<std::uint64_t> born = id ? takeNumber(bytes) : std::nullopt;
    const std::optional<std::uint64_t> theirs = born ? takeNumber(bytes) : std::nullopt;
    if (!theirs || *theirs != ourNamespace) {
        return std::nullopt;
    }
    return MonitorMessage{{*id, *born}, std::string(bytes)};
}

std::unique_ptr<MonitorInbox> openMonitorInbox() {
    const std::string path = monitorPipePath();
    const std::string folder = path.substr(0, path.rfind('/'));
    ::mkdir(folder.c_str(), 0700);  // there already, but for the one under /tmp
    // Without a view of the processes every host would look as if it had crashed.
    if (!isPrivateFolder(folder) || thisProcess().born == 0) {
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
