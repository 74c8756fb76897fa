#include "platform/process.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <string>
#include <string_view>

#include "platform/posix/file_bytes.h"
#include "platform/posix/process_namespace.h"

namespace lumiset::platform {
namespace {

/// When the process was born, in clock ticks after the system's start. Nothing for one that has ended, whether or not
/// its parent has asked for it yet.
std::optional<std::uint64_t> birthOf(std::uint64_t id) {
    // "NUMBER (NAME) STATE ..." with the time of birth 19 fields behind the state. The name may hold anything.
    const std::optional<std::string> text = readBytes("/proc/" + std::to_string(id) + "/stat", 65536);
    const std::size_t nameEnd = text ? text->rfind(") ") : std::string::npos;
    if (nameEnd == std::string::npos) {
        return std::nullopt;
    }
    std::string_view rest = std::string_view(*text).substr(nameEnd + 2);
    if (rest.starts_with('Z') || rest.starts_with('X')) {
        return std::nullopt;
    }
    for (int field = 0; field < 19; ++field) {
        rest.remove_prefix(std::min(rest.find(' '), rest.size() - 1) + 1);
    }
    std::uint64_t birth = 0;
    std::from_chars(rest.data(), rest.data() + rest.size(), birth);
    return birth;
}

}  // namespace

Process findProcess(std::uint64_t id) {
    return {id, birthOf(id).value_or(0)};
}

Process thisProcess() {
    return findProcess(static_cast<std::uint64_t>(::getpid()));
}

std::uint64_t processNamespace(std::uint64_t id) {
    struct stat status {};
    return ::stat(("/proc/" + std::to_string(id) + "/ns/pid").c_str(), &status) == 0 ? status.st_ino : 0;
}

bool isRunning(const Process& process) {
    return birthOf(process.id) == process.born;
}

}  // namespace lumiset::platform
