#include "platform/interruption.h"

#include <windows.h>

#include <atomic>
#include <csignal>
#include <utility>

namespace lumiset::platform {
namespace {

std::atomic<void (*)(int)> g_note{nullptr};

BOOL WINAPI handle(DWORD event) {
    const bool typed = event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT;
    g_note.load()(typed ? SIGINT : SIGTERM);
    if (!typed) {
        // The window closes, or the user signs off: the process ends when this returns, after some seconds in any case.
        Sleep(INFINITE);
    }
    return TRUE;
}

}  // namespace

void onInterruption(void (*note)(int signal)) {
    if (g_note.exchange(note) == nullptr) {
        SetConsoleCtrlHandler(handle, TRUE);
    }
}

void onInterruptionInThread(std::function<void(int signal)> note) {
    static const std::function<void(int)> s_note = std::move(note);
    onInterruption([](int signal) { s_note(signal); });
}

}  // namespace lumiset::platform
