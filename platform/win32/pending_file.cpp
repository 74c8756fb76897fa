#include "platform/pending_file.h"

#include <windows.h>

#include <algorithm>
#include <cwchar>
#include <mutex>
#include <set>
#include <system_error>

#include "platform/guid.h"
#include "platform/text.h"
#include "platform/win32/handle.h"

namespace lumiset::platform {
namespace {

constexpr std::wstring_view kPrefix = L".lumiset-";
constexpr std::size_t kDigits = 16;

/// Guards the set of open files' names. What ends a process runs as a thread of its own here, so it may wait.
std::mutex g_mutex;
std::set<std::pair<HANDLE, std::wstring>> g_pending;

[[noreturn]] void failNow() {
    throw std::system_error(static_cast<int>(GetLastError()), std::system_category());
}

std::wstring nextHiddenName() {
    Guid guid{};
    if (!makeGuid(guid)) {
        failNow();
    }
    wchar_t digits[32];
    std::swprintf(digits, std::size(digits), L"%08x%04x%04x", guid.data1, guid.data2, guid.data3);
    return std::wstring(kPrefix) + digits;
}

bool isHiddenName(std::wstring_view name) {
    return name.starts_with(kPrefix) &&
           name.substr(kPrefix.size(), kDigits).find_first_not_of(L"0123456789abcdef") == std::wstring_view::npos;
}

/// What other processes have left. Those that still write have their files open and share no right to delete.
void sweepOnce(const std::wstring& folder) {
    static std::set<std::wstring> s_swept;
    const std::lock_guard lock(g_mutex);
    if (!s_swept.insert(folder).second) {
        return;
    }
    WIN32_FIND_DATAW found{};
    const HANDLE search =
        FindFirstFileW((folder + std::wstring(kPrefix) + std::wstring(kDigits, L'?') + L'*').c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) {
        return;
    }
    do {
        if (isHiddenName(found.cFileName)) {
            DeleteFileW((folder + found.cFileName).c_str());
        }
    } while (FindNextFileW(search, &found) != 0);
    FindClose(search);
}

}  // namespace

struct PendingFile::State {
    std::wstring target;
    std::wstring hidden;  ///< empty once it has moved
    std::string path;
    Handle file{nullptr};

    State() = default;
    State(const State&) = delete;
    State& operator=(const State&) = delete;
    ~State() {
        if (!hidden.empty()) {
            forget();
            file.close();
            DeleteFileW(hidden.c_str());
        }
    }

    void create() {
        const std::size_t separator = target.find_last_of(L"\\/:");
        const std::wstring folder = target.substr(0, separator + 1);
        const std::size_t dot = target.rfind(L'.');
        const bool hasExtension = dot != std::wstring::npos && (separator == std::wstring::npos || dot > separator);
        const std::wstring extension = hasExtension ? target.substr(dot) : L"";
        do {
            hidden = folder + nextHiddenName() + extension;
            file = Handle(CreateFileW(hidden.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                      CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
        } while (!file && GetLastError() == ERROR_FILE_EXISTS);
        if (!file) {
            hidden.clear();
            failNow();
        }
        {
            const std::lock_guard lock(g_mutex);
            g_pending.emplace(file.get(), hidden);
        }
        path = toUtf8(hidden).value_or("");
        sweepOnce(folder);
    }

    void forget() const {
        const std::lock_guard lock(g_mutex);
        g_pending.erase({file.get(), hidden});
    }
};

PendingFile::PendingFile(const std::filesystem::path& target) : m_state(std::make_unique<State>()) {
    m_state->target = target.wstring();
    m_state->create();
}

PendingFile::~PendingFile() = default;

const std::string& PendingFile::path() const {
    return m_state->path;
}

void PendingFile::write(std::string_view bytes) {
    while (!bytes.empty()) {
        DWORD count = 0;
        const auto size = static_cast<DWORD>(std::min<std::size_t>(bytes.size(), 1U << 30U));
        if (WriteFile(m_state->file.get(), bytes.data(), size, &count, nullptr) == 0) {
            failNow();
        }
        bytes.remove_prefix(count);
    }
}

void PendingFile::commit() {
    if (FlushFileBuffers(m_state->file.get()) == 0) {
        failNow();
    }
    m_state->forget();
    m_state->file.close();
    // Not every system's ReplaceFile refuses to put a file in a folder's place.
    const DWORD attributes = GetFileAttributesW(m_state->target.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        SetLastError(ERROR_ACCESS_DENIED);
        failNow();
    }
    // The first keeps the permissions of the old file, which must be there.
    if (ReplaceFileW(m_state->target.c_str(), m_state->hidden.c_str(), nullptr, 0, nullptr, nullptr) == 0 &&
        MoveFileExW(m_state->hidden.c_str(), m_state->target.c_str(),
                    MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) == 0) {
        failNow();
    }
    m_state->hidden.clear();
}

void PendingFile::removeAll() noexcept {
    const std::lock_guard lock(g_mutex);
    for (const auto& [handle, name] : g_pending) {
        CloseHandle(handle);
        DeleteFileW(name.c_str());
    }
    g_pending.clear();
}

}  // namespace lumiset::platform
