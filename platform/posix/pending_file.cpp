#include "platform/pending_file.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <optional>
#include <set>
#include <system_error>
#include <tuple>

#include "platform/posix/descriptor.h"
#include "platform/posix/pending_names.h"

namespace lumiset::platform {
namespace {

constexpr std::string_view kPrefix = ".lumiset-";
constexpr std::size_t kHiddenDigits = 16;
constexpr std::size_t kLongestExtension = 16;
static_assert(kPrefix.size() + kHiddenDigits + kLongestExtension <= PendingName::kLongest);

[[noreturn]] void fail(int error, const std::string& where = {}) {
    const std::error_code code(error, std::generic_category());
    throw where.empty() ? std::system_error(code) : std::system_error(code, where);
}

bool isHiddenName(std::string_view name) {
    return name.starts_with(kPrefix) && name.size() >= kPrefix.size() + kHiddenDigits &&
           name.substr(kPrefix.size(), kHiddenDigits).find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

/// With the extension of the target, by which some tell what a file is to hold.
std::string nextHiddenName(const std::string& extension) {
    std::uint64_t random = 0;
    if (::getrandom(&random, sizeof random, 0) != static_cast<ssize_t>(sizeof random)) {
        fail(errno);
    }
    char digits[kHiddenDigits + 1];
    std::snprintf(digits, sizeof digits, "%016llx", static_cast<unsigned long long>(random));
    return std::string(kPrefix) + digits + (extension.size() <= kLongestExtension ? extension : "");
}

/// True for a link that somebody else put into a folder that everybody may write to: it leads where its owner wants.
bool isPlantedLink(const std::string& path) {
    struct stat link {};
    struct stat folder {};
    if (::lstat(path.c_str(), &link) != 0 || !S_ISLNK(link.st_mode) || link.st_uid == ::geteuid()) {
        return false;
    }
    const std::size_t slash = path.rfind('/');
    const std::string place = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    constexpr mode_t kOpenToAll = S_ISVTX | S_IWOTH;
    return ::stat(place.c_str(), &folder) == 0 && (folder.st_mode & kOpenToAll) == kOpenToAll &&
           folder.st_uid != link.st_uid;
}

bool isSameFile(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

/// Removes what processes that are gone have left in a folder: files under hidden names that nobody has locked. Only
/// those for targets of that extension: other machines may write other things there, and not all locks reach so far.
void sweep(int folder, const std::string& extension) {
    const int reading = ::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    DIR* const entries = reading >= 0 ? ::fdopendir(reading) : nullptr;
    if (entries == nullptr) {
        Descriptor(reading).close();
        return;
    }
    while (const struct dirent* entry = ::readdir(entries)) {
        if (!isHiddenName(entry->d_name) || !std::string_view(entry->d_name).ends_with(extension)) {
            continue;
        }
        const Descriptor file(::openat(folder, entry->d_name, O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
        struct stat status {};
        if (file && ::fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == ::geteuid() &&
            ::flock(file.get(), LOCK_EX | LOCK_NB) == 0) {
            ::unlinkat(folder, entry->d_name, 0);
        }
    }
    ::closedir(entries);
}

/// Once in each folder: one may hold a hundred thousand pictures of a sequence. A folder's number alone would not do,
/// for it is given again when the folder is gone.
void sweepOnce(const std::string& place, int folder, const std::string& extension) {
    static std::mutex s_mutex;
    static std::set<std::tuple<std::string, std::string, dev_t, ino_t>> s_swept;
    struct stat status {};
    const std::lock_guard lock(s_mutex);
    if (::fstat(folder, &status) == 0 && s_swept.emplace(place, extension, status.st_dev, status.st_ino).second) {
        sweep(folder, extension);
    }
}

}  // namespace

struct PendingFile::State {
    std::string path;
    Descriptor file{-1};
    // All below is empty for a pipe or a device.
    Descriptor folder{-1};
    std::string hiddenName;
    std::string finalName;  ///< in the folder
    std::optional<struct stat> old;
    std::optional<PendingName> pendingName;  ///< until it has left its hidden name

    State() = default;
    State(const State&) = delete;
    State& operator=(const State&) = delete;
    ~State() {
        if (pendingName) {
            ::unlinkat(folder.get(), hiddenName.c_str(), 0);
        }
    }

    void replace(const std::string& target) {
        const std::size_t slash = target.rfind('/');
        const std::string place = slash == std::string::npos ? "." : target.substr(0, std::max<std::size_t>(slash, 1));
        finalName = target.substr(slash + 1);
        folder = Descriptor(::open(place.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
        if (!folder) {
            fail(errno, "folder '" + place + "'");
        }
        do {
            create(place);
        } while (!file);
        sweepOnce(place, folder.get(), std::filesystem::path(hiddenName).extension().string());
        // Opened by this name it is this very file, whatever stands in the folder by then.
        path = "/proc/self/fd/" + std::to_string(file.get());
        if (::access(path.c_str(), W_OK) != 0) {
            path = place + '/' + hiddenName;
        }
    }

    /// Until it is complete a file that replaces another is for nobody else's eyes. Leaves `file` empty where another
    /// name is to be tried.
    void create(const std::string& place) {
        hiddenName = nextHiddenName(std::filesystem::path(finalName).extension().string());
        pendingName.emplace(folder.get(), hiddenName.c_str());
        constexpr int kFlags = O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
        file = Descriptor(::openat(folder.get(), hiddenName.c_str(), kFlags, old ? 0600 : 0666));
        if (!file && errno != EEXIST) {
            const int error = errno;
            pendingName.reset();
            fail(error, "folder '" + place + "'");
        }
        // Another process that sweeps the folder may have been quicker with the lock.
        struct stat status {};
        if (file && ((::flock(file.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) ||
                     ::fstat(file.get(), &status) != 0 || status.st_nlink == 0)) {
            file.close();
        }
    }

    /// As the one that was there. Bits that let programs run as another user go where the owner cannot be kept.
    void takePermissions() {
        struct stat status {};
        if (!old || ::fstat(file.get(), &status) != 0) {
            return;
        }
        const bool isKept = (status.st_uid == old->st_uid && status.st_gid == old->st_gid) ||
                            ::fchown(file.get(), old->st_uid, old->st_gid) == 0;
        if (::fchmod(file.get(), old->st_mode & (isKept ? 07777U : 0777U)) != 0) {
            fail(errno);
        }
    }

    void moveIntoPlace() {
        takePermissions();
        if (::fsync(file.get()) != 0 && errno != EINVAL && errno != ENOTSUP) {
            fail(errno);
        }
        struct stat ours {};
        struct stat there {};
        if (::fstat(file.get(), &ours) != 0 ||
            ::fstatat(folder.get(), hiddenName.c_str(), &there, AT_SYMLINK_NOFOLLOW) != 0) {
            fail(errno);
        }
        if (!isSameFile(ours, there)) {
            fail(EBUSY);
        }
        if (::renameat(folder.get(), hiddenName.c_str(), folder.get(), finalName.c_str()) != 0) {
            fail(errno);
        }
        pendingName.reset();
        if (!file.close()) {
            fail(errno);
        }
    }
};

PendingFile::PendingFile(const std::filesystem::path& target) : m_state(std::make_unique<State>()) {
    struct stat status {};
    if (::stat(target.c_str(), &status) != 0) {
        m_state->replace(target.string());
        return;
    }
    if (S_ISDIR(status.st_mode)) {
        fail(EISDIR);
    }
    if (!S_ISREG(status.st_mode)) {
        if (::access(target.c_str(), W_OK) != 0) {
            fail(errno);
        }
        m_state->path = target.string();
        return;
    }
    if (isPlantedLink(target.string())) {
        fail(EACCES);
    }
    if (!Descriptor(::open(target.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC))) {
        fail(errno);
    }
    const std::unique_ptr<char, void (*)(void*)> real(::realpath(target.c_str(), nullptr), std::free);
    if (real == nullptr) {
        fail(errno);
    }
    m_state->old = status;
    m_state->replace(real.get());
}

PendingFile::~PendingFile() = default;

const std::string& PendingFile::path() const {
    return m_state->path;
}

void PendingFile::write(std::string_view bytes) {
    if (!m_state->file) {  // a pipe waits for its reader until there is something to read
        m_state->file = Descriptor(::open(m_state->path.c_str(), O_WRONLY | O_CLOEXEC));
        if (!m_state->file) {
            fail(errno);
        }
    }
    while (!bytes.empty()) {
        const ssize_t written = ::write(m_state->file.get(), bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR) {
            fail(errno);
        }
        bytes.remove_prefix(written > 0 ? static_cast<std::size_t>(written) : 0);
    }
}

void PendingFile::commit() {
    if (m_state->folder) {
        m_state->moveIntoPlace();
    } else if (!m_state->file.close()) {
        fail(errno);
    }
}

void PendingFile::removeAll() noexcept {
    PendingName::unlinkAll();
}

}  // namespace lumiset::platform
