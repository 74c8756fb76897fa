#include "platform/interruption.h"

#include <signal.h>

#include <initializer_list>

namespace lumiset::platform {

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

}  // namespace lumiset::platform
