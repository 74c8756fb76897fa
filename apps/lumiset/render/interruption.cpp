#include "apps/lumiset/render/interruption.h"

#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>

#include "apps/lumiset/messages.h"
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
        ::_exit(128 + number);
    }
}

}  // namespace

void watchForInterruption() {
    platform::prepareFarewell();
    struct sigaction action {};
    action.sa_handler = &noteSignal;
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

int interruptingSignal() {
    return g_signal.load();
}

void endInterrupted(int signal, const std::string& output) {
    tell("lumiset: Interrupted before " + (output == "-" ? "the output" : '"' + output + '"') + " was complete.\n");
    std::fflush(nullptr);
    std::_Exit(128 + signal);
}

}  // namespace lumiset::app
