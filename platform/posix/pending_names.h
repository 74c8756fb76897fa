#pragma once

namespace lumiset::platform {

/// Names of files that are to go when a signal ends the process: a table of fixed size that a signal handler can read.
/// A name that finds no room there stays behind, and the next process that writes to its folder removes it.
class PendingName {
public:
    /// `folder` is a descriptor that stays open as long as the object. `name` has `kLongest` characters at most.
    PendingName(int folder, const char* name);
    PendingName(const PendingName&) = delete;
    PendingName& operator=(const PendingName&) = delete;
    ~PendingName();

    static void unlinkAll() noexcept;
    static constexpr int kLongest = 63;

private:
    struct Entry;
    static Entry s_entries[32];
    Entry* m_entry = nullptr;
};

}  // namespace lumiset::platform
