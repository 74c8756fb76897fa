// A host opens the pipe, writes one message and closes it. Several instances of the pipe wait for hosts at once, so
// that one host seldom finds all of them taken by others.

#include "platform/monitor_inbox.h"

#include <windows.h>

#include <algorithm>
#include <array>

#include "platform/win32/handle.h"
#include "platform/win32/monitor_pipe_name.h"

namespace lumiset::platform {
namespace {

constexpr DWORD kInstances = 8;
/// How often it is looked for processes that cannot be waited for.
constexpr std::chrono::milliseconds kLookTime{250};
constexpr DWORD kLongestMessage = 8192;

/// One instance of the pipe. Its event is signalled when there is something to do.
class Instance {
public:
    Instance(HANDLE pipe, HANDLE event) : m_pipe(pipe), m_event(event) { m_overlapped.hEvent = event; }
    Instance(const Instance&) = delete;
    Instance& operator=(const Instance&) = delete;
    ~Instance() {
        // The system must not write into an object that is gone.
        DWORD count = 0;
        if (CancelIo(m_pipe.get()) != 0) {
            GetOverlappedResult(m_pipe.get(), &m_overlapped, &count, TRUE);
        }
    }

    [[nodiscard]] HANDLE event() const { return m_event.get(); }

    void waitForHost() {
        m_connected = false;
        if (ConnectNamedPipe(m_pipe.get(), &m_overlapped) == 0 &&
            (GetLastError() == ERROR_PIPE_CONNECTED || GetLastError() == ERROR_NO_DATA)) {
            SetEvent(m_event.get());  // a host was quicker; it may even have gone again
        }
    }

    /// Takes the next step: a host has come, or its message has.
    void serve(std::vector<MonitorMessage>& messages) {
        if (!m_connected) {
            m_connected = true;
            if (ReadFile(m_pipe.get(), m_buffer.data(), kLongestMessage, nullptr, &m_overlapped) == 0 &&
                GetLastError() != ERROR_IO_PENDING) {
                next();  // it left without a word, or has too many
            }
            return;
        }
        DWORD count = 0;
        ULONG sender = 0;
        if (GetOverlappedResult(m_pipe.get(), &m_overlapped, &count, FALSE) != 0 &&
            GetNamedPipeClientProcessId(m_pipe.get(), &sender) != 0) {
            messages.push_back({findProcess(sender), std::string(m_buffer.data(), count)});
        }
        next();
    }

private:
    void next() {
        DisconnectNamedPipe(m_pipe.get());
        waitForHost();
    }

    Handle m_pipe;
    Handle m_event;
    OVERLAPPED m_overlapped{};
    bool m_connected = false;
    std::array<char, kLongestMessage> m_buffer{};
};

class NamedPipe final : public MonitorInbox {
public:
    /// False when somebody has a pipe of that name already.
    bool open() {
        for (DWORD i = 0; i < kInstances; ++i) {
            const DWORD first = i == 0 ? FILE_FLAG_FIRST_PIPE_INSTANCE : 0;
            const HANDLE pipe =
                CreateNamedPipeW(kMonitorPipe, PIPE_ACCESS_INBOUND | FILE_FLAG_OVERLAPPED | first,
                                 PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE | PIPE_WAIT | PIPE_REJECT_REMOTE_CLIENTS,
                                 kInstances, 0, kLongestMessage, 0, nullptr);
            if (pipe == INVALID_HANDLE_VALUE) {
                return false;
            }
            m_instances[i] = std::make_unique<Instance>(pipe, CreateEventW(nullptr, TRUE, FALSE, nullptr));
            m_events[i] = m_instances[i]->event();
            m_instances[i]->waitForHost();
        }
        return true;
    }

    bool receive(std::chrono::milliseconds time, const std::vector<Process>& watched,
                 std::vector<MonitorMessage>& messages) override {
        std::vector<HANDLE> waiting(m_events.begin(), m_events.end());
        std::vector<Handle> processes;
        for (const Process& process : watched) {
            processes.emplace_back(OpenProcess(SYNCHRONIZE, FALSE, static_cast<DWORD>(process.id)));
            if (!isRunning(process)) {
                time = time.zero();  // its number may be another's by now
            } else if (!processes.back() || waiting.size() == MAXIMUM_WAIT_OBJECTS) {
                time = std::min(time, kLookTime);
            } else {
                waiting.push_back(processes.back().get());
            }
        }
        auto timeout = static_cast<DWORD>(time.count());
        auto count = static_cast<DWORD>(waiting.size());
        for (;;) {
            const DWORD found = WaitForMultipleObjects(count, waiting.data(), FALSE, timeout);
            if (found >= WAIT_OBJECT_0 + count) {
                return found == WAIT_TIMEOUT;
            }
            if (found - WAIT_OBJECT_0 < kInstances) {
                m_instances[found - WAIT_OBJECT_0]->serve(messages);
            }
            timeout = 0;  // and whatever else there is by now
            count = kInstances;
        }
    }

private:
    std::array<std::unique_ptr<Instance>, kInstances> m_instances;
    std::array<HANDLE, kInstances> m_events{};
};

}  // namespace

std::unique_ptr<MonitorInbox> openMonitorInbox() {
    auto inbox = std::make_unique<NamedPipe>();
    return inbox->open() ? std::move(inbox) : nullptr;
}

}  // namespace lumiset::platform
