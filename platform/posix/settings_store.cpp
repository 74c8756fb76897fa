// One ini file a section under the user's configuration folder. A file is never changed in place: a writer holds the
// section's lock, reads the file, and puts a new one under its name. So readers need no lock.

#include "platform/settings_store.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <set>
#include <string_view>
#include <system_error>
#include <thread>
#include <tuple>

#include "platform/pending_file.h"
#include "platform/posix/descriptor.h"
#include "platform/posix/file_bytes.h"

namespace lumiset::platform {
namespace {

constexpr std::size_t kLargestFile = 4U << 20U;

std::string configFolder() {
    // Relative paths are invalid in these variables.
    if (const char* config = std::getenv("XDG_CONFIG_HOME"); config != nullptr && config[0] == '/') {
        return config;
    }
    if (const char* home = std::getenv("HOME"); home != nullptr && home[0] == '/') {
        return std::string(home) + "/.config";
    }
    struct passwd entry {};
    struct passwd* found = nullptr;
    char texts[4096];
    if (::getpwuid_r(::getuid(), &entry, texts, sizeof texts, &found) == 0 && found != nullptr) {
        return std::string(found->pw_dir) + "/.config";
    }
    return {};
}

/// The file of a section; empty where there is none for it.
std::string fileOf(const std::string& section) {
    const std::string folder = configFolder();
    if (folder.empty() || section.empty()) {
        return {};
    }
    std::string path = folder + "/vantrel/";
    for (const char character : section) {
        if (character == '/' || character == '.' || character == '\0') {
            return {};
        }
        path += character == '\\' ? '/' : character;
    }
    return path + ".ini";
}

/// What would end a line or a name, or be lost at their ends, becomes \xHH.
std::string escaped(std::string_view text, bool isName) {
    std::string line;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const bool outer = i == 0 || i + 1 == text.size();
        const bool special = byte < 0x20 || byte == '\\' || byte == 0x7F || (byte == ' ' && outer) ||
                             (isName && (byte == '=' || (i == 0 && (byte == '[' || byte == ';' || byte == '#'))));
        if (special) {
            constexpr const char* kDigits = "0123456789abcdef";
            line += {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 15]};
        } else {
            line += text[i];
        }
    }
    return line;
}

int digitOf(char character) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    const std::size_t at = kDigits.find(character);
    return at == std::string_view::npos ? -1 : static_cast<int>(at);
}

std::string unescaped(std::string_view line) {
    std::string text;
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (line[i] == '\\' && i + 3 < line.size() && line[i + 1] == 'x' && digitOf(line[i + 2]) >= 0 &&
            digitOf(line[i + 3]) >= 0) {
            text += static_cast<char>(digitOf(line[i + 2]) * 16 + digitOf(line[i + 3]));
            i += 3;
        } else {
            text += line[i];
        }
    }
    return text;
}

std::string_view trimmed(std::string_view text) {
    constexpr const char* kBlank = " \t\r";
    const std::size_t first = text.find_first_not_of(kBlank);
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(kBlank) - first + 1);
}

/// A line of a file as it stands. Comments and headings have no setting.
struct Line {
    std::string_view text;
    std::optional<std::pair<std::string, std::string>> setting;
};

std::vector<Line> linesOf(std::string_view bytes) {
    std::vector<Line> lines;
    while (!bytes.empty()) {
        const std::string_view text = bytes.substr(0, bytes.find('\n'));
        bytes.remove_prefix(std::min(text.size() + 1, bytes.size()));
        Line line{text, {}};
        const std::string_view content = trimmed(text);
        const std::size_t equals = content.find('=');
        if (equals != std::string_view::npos && content.find_first_of("[;#") != 0) {
            line.setting.emplace(unescaped(trimmed(content.substr(0, equals))),
                                 unescaped(trimmed(content.substr(equals + 1))));
        }
        lines.push_back(std::move(line));
    }
    return lines;
}

[[noreturn]] void failToStore(int error) {
    throw std::system_error(error, std::generic_category());
}

/// Tells one state of a file from the next, for each is a file of its own.
std::tuple<ino_t, time_t, long> stampOf(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 ? std::tuple(status.st_ino, status.st_ctim.tv_sec, status.st_ctim.tv_nsec)
                                              : std::tuple<ino_t, time_t, long>();
}

/// Waits for the lock, but not for ever: another process may have been stopped while it held it. As long as others get
/// on with their changes it is only a matter of our turn.
Descriptor lockOf(const std::string& path) {
    using std::chrono::steady_clock;
    constexpr auto kPatience = std::chrono::seconds(2);  // without a change of the file
    constexpr auto kLongest = std::chrono::seconds(30);
    std::error_code ignored;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path(), ignored);
    Descriptor file(::open((path + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0666));
    if (!file) {
        failToStore(errno);
    }
    const auto start = steady_clock::now();
    auto lastChange = start;
    auto stamp = stampOf(path);
    for (auto now = start; now - lastChange < kPatience && now - start < kLongest; now = steady_clock::now()) {
        if (::flock(file.get(), LOCK_EX | LOCK_NB) == 0) {
            return file;
        }
        if (errno != EWOULDBLOCK && errno != EINTR) {
            failToStore(errno);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        if (const auto next = stampOf(path); next != stamp) {
            stamp = next;
            lastChange = steady_clock::now();
        }
    }
    failToStore(ETIMEDOUT);
}

/// All of a section's file; nothing where there is none.
std::optional<std::string> contentsOf(const std::string& path) {
    std::optional<std::string> bytes = path.empty() ? std::nullopt : readBytes(path, kLargestFile);
    if (!bytes && !path.empty() && errno != ENOENT && errno != ENOTDIR) {
        failToStore(errno);
    }
    return bytes;
}

using Changes = std::map<std::string, std::string>;  ///< values by name

bool hasNul(const std::string& text) {
    return text.find('\0') != std::string::npos;
}

/// Throws std::system_error, with nothing changed.
void rewrite(const std::string& section, Changes changes) {
    const std::string path = fileOf(section);
    const bool storable = std::ranges::none_of(changes, [](const auto& change) {
        return change.first.empty() || hasNul(change.first) || hasNul(change.second);
    });
    if (path.empty() || !storable) {
        failToStore(EINVAL);
    }
    const Descriptor lock = lockOf(path);
    const std::optional<std::string> old = contentsOf(path);
    const auto line = [](const std::string& name, const std::string& value) {
        return escaped(name, true) + '=' + escaped(value, false) + '\n';
    };
    std::string bytes;
    std::set<std::string> done;
    const std::string text = old ? *old : '[' + section + "]\n";
    for (const Line& each : linesOf(text)) {
        const auto change = each.setting ? changes.find(each.setting->first) : changes.end();
        if (change == changes.end()) {
            bytes.append(each.text).append("\n");
        } else if (done.insert(change->first).second) {
            bytes += line(change->first, change->second);
        }
    }
    for (const auto& [name, value] : changes) {
        if (!done.contains(name)) {
            bytes += line(name, value);
        }
    }
    if (bytes.size() > kLargestFile) {
        failToStore(EFBIG);  // nobody could read it any more
    }
    if (old || !changes.empty()) {
        replaceBytes(path, bytes);
    }
}

bool isRewritten(const std::string& section, Changes changes) {
    try {
        rewrite(section, std::move(changes));
        return true;
    } catch (const std::system_error&) {
        return false;
    }
}

}  // namespace

Settings readSettings(const std::string& section) {
    Settings settings;
    if (const std::optional<std::string> bytes = contentsOf(fileOf(section))) {
        for (Line& line : linesOf(*bytes)) {
            if (line.setting) {
                settings.push_back(std::move(*line.setting));
            }
        }
    }
    return settings;
}

std::optional<std::string> readSetting(const std::string& section, const std::string& name) {
    std::optional<std::string> found;
    for (auto& [each, value] : readSettings(section)) {
        if (each == name) {
            found = std::move(value);  // of a name that a person wrote twice the last counts
        }
    }
    return found;
}

bool writeSetting(const std::string& section, const std::string& name, const std::string& value) {
    return isRewritten(section, {{name, value}});
}

bool writeSettings(const std::string& section, const Settings& settings) {
    return isRewritten(section, Changes(settings.begin(), settings.end()));
}

bool removeSettings(const std::string& section) {
    const std::string path = fileOf(section);
    if (path.empty()) {
        return false;
    }
    try {
        const Descriptor lock = lockOf(path);
        return ::unlink(path.c_str()) == 0 || errno == ENOENT;
    } catch (const std::system_error&) {
        return false;
    }
}

std::string storingProblem(const std::string& section) {
    try {
        rewrite(section, {});
        // Where there is no file yet, whether there can be one.
        const PendingFile probe(fileOf(section));
        return {};
    } catch (const std::system_error& error) {
        return fileOf(section) + ": " + error.what();
    }
}

}  // namespace lumiset::platform
