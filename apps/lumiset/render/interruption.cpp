#include "apps/lumiset/render/interruption.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>

#include "apps/lumiset/messages.h"
#include "platform/interruption.h"
#include "platform/monitor_pipe.h"
#include "platform/pending_file.h"

namespace lumiset::app {
namespace {

std::atomic<int> g_signal{0};
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler may touch nothing else");

extern "C" void noteSignal(int number) {
    if (g_signal.exchange(number) != 0) {
        platform::bidFarewell();
        platform::PendingFile::removeAll();
        std::_Exit(128 + number);
    }
}

}  // namespace

void watchForInterruption() {
    platform::prepareFarewell();
    platform::onInterruption(&noteSignal);
}

int interruptingSignal() {
    return g_signal.load();
}

void endInterrupted(int signal, const std::string& output) {
    tell("lumiset: Interrupted before " + (output == "-" ? "the output" : '"' + output + '"') + " was complete.\n");
    std::fflush(nullptr);
    platform::bidFarewell();  // a frame in OpenGL that takes too long is still under way
    std::_Exit(128 + signal);
}

}  // namespace lumiset::app
