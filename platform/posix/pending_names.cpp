#include "platform/posix/pending_names.h"

#include <unistd.h>

#include <atomic>
#include <cstring>

namespace lumiset::platform {
namespace {

enum State { kFree, kBeingWritten, kHeld, kUnlinked };

}  // namespace

struct PendingName::Entry {
    std::atomic<int> state;
    int folder;
    char name[kLongest + 1];

    bool change(int from, int to) { return state.compare_exchange_strong(from, to); }
};

PendingName::Entry PendingName::s_entries[32];
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler may touch nothing else");

PendingName::PendingName(int folder, const char* name) {
    for (Entry& entry : s_entries) {
        if (entry.change(kFree, kBeingWritten)) {
            entry.folder = folder;
            std::strncpy(entry.name, name, kLongest);
            entry.state = kHeld;
            m_entry = &entry;
            return;
        }
    }
}

PendingName::~PendingName() {
    if (m_entry != nullptr) {
        m_entry->change(kHeld, kFree);  // unless the process is ending and its name still being read
    }
}

void PendingName::unlinkAll() noexcept {
    for (Entry& entry : s_entries) {
        if (entry.change(kHeld, kUnlinked)) {
            ::unlinkat(entry.folder, entry.name, 0);
        }
    }
}

}  // namespace lumiset::platform
