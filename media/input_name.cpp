#include "media/input_name.h"

#include <glob.h>

#include <cctype>
#include <charconv>
#include <filesystem>
#include <set>

#include <fmt/format.h>

#include "media/media.h"
#include "platform/files.h"

namespace fs = std::filesystem;

namespace lumiset::media {
namespace {

// A name around its "%d" or "%04d".
struct Pattern {
    std::string before;
    int digits = 1;
    std::string after;
};

std::optional<Pattern> splitPattern(const std::string& name) {
    for (std::size_t at = name.find('%'); at != std::string::npos; at = name.find('%', at + 1)) {
        std::size_t end = at + 1;
        int digits = 1;
        if (end + 1 < name.size() && name[end] == '0' && name[end + 1] >= '1' && name[end + 1] <= '9') {
            digits = name[end + 1] - '0';
            end += 2;
        }
        if (end < name.size() && name[end] == 'd') {
            return Pattern{name.substr(0, at), digits, name.substr(end + 1)};
        }
    }
    return std::nullopt;
}

// The number that a file name holds where the pattern has its %d.
std::optional<int> numberIn(const std::string& name, const Pattern& pattern) {
    if (name.size() <= pattern.before.size() + pattern.after.size() || !name.starts_with(pattern.before) ||
        !name.ends_with(pattern.after)) {
        return std::nullopt;
    }
    const std::size_t length = name.size() - pattern.before.size() - pattern.after.size();
    const std::string text = name.substr(pattern.before.size(), length);
    const std::optional<int> number = parseWhole(text);
    return number && fmt::format("{:0{}}", *number, pattern.digits) == text ? number : std::nullopt;
}

// The numbers of the pictures that are there, within the range that the name gives.
std::set<int> numbersOf(const SequenceName& sequence) {
    const fs::path path(sequence.pattern);
    const std::string name = path.filename().string();
    const std::optional<Pattern> pattern = splitPattern(name);
    if (!pattern) {
        throw MediaError(
            fmt::format("'{}' has its number in a folder's name; it has to be in the file's.", path.string()));
    }
    std::set<int> numbers;
    std::error_code error;
    const fs::path folder = path.has_parent_path() ? path.parent_path() : fs::path(".");
    for (const fs::path& file : platform::filesIn(folder, error)) {
        const auto number = numberIn(file.filename().string(), *pattern);
        if (number && *number >= sequence.first.value_or(0) && *number <= sequence.last.value_or(*number)) {
            numbers.insert(*number);
        }
    }
    if (error) {
        throw MediaError(fmt::format("Cannot read the folder '{}': {}.", folder.string(), error.message()));
    }
    return numbers;
}

// The files that a shell's pattern stands for, sorted.
std::vector<std::string> matches(const std::string& pattern) {
    glob_t found{};
    std::vector<std::string> files;
    if (::glob(pattern.c_str(), 0, nullptr, &found) == 0) {
        files.assign(found.gl_pathv, found.gl_pathv + found.gl_pathc);
    }
    ::globfree(&found);
    return files;
}

}  // namespace

std::optional<int> parseWhole(std::string_view text) {
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool plain = !text.empty() && text.size() <= 9 && text[0] != '-';
    return plain && error == std::errc() && end == text.data() + text.size() ? std::optional(value) : std::nullopt;
}

std::string SequenceName::fileName(int number) const {
    const Pattern parts = splitPattern(pattern).value_or(Pattern{pattern, 1, ""});
    return parts.before + fmt::format("{:0{}}", number, parts.digits) + parts.after;
}

std::optional<SequenceName> parseSequenceName(const std::string& name) {
    std::error_code ignored;
    if (!splitPattern(name) || fs::exists(name, ignored)) {
        return std::nullopt;
    }
    const std::size_t colon = name.rfind(':');
    const std::string range = colon == std::string::npos ? "" : name.substr(colon + 1);
    const std::size_t dash = range.find('-');
    const std::optional<int> first = parseWhole(range.substr(0, dash));
    const std::optional<int> last = dash == std::string::npos ? std::nullopt : parseWhole(range.substr(dash + 1));
    if (!first || (dash != std::string::npos && !last)) {
        return SequenceName{name, std::nullopt, std::nullopt, false};
    }
    if (last && *last < *first) {
        throw MediaError(fmt::format("The range of '{}' ends before it begins.", name));
    }
    return SequenceName{name.substr(0, colon), first, last, false};
}

void findSequence(SequenceName& sequence) {
    const std::set<int> numbers = numbersOf(sequence);
    if (numbers.empty()) {
        throw MediaError(fmt::format("There is no picture by the name of '{}'.", sequence.pattern));
    }
    sequence.first = sequence.first.value_or(*numbers.begin());
    sequence.last = sequence.last.value_or(*numbers.rbegin());
    for (int number = *sequence.first; number <= *sequence.last; number++) {
        if (!numbers.contains(number)) {
            throw MediaError(fmt::format("'{}' is missing from the image sequence.", sequence.fileName(number)));
        }
    }
}

std::optional<SequenceName> findGlob(const std::string& pattern) {
    std::error_code ignored;
    if (pattern.find_first_of("*?[") == std::string::npos || fs::exists(pattern, ignored)) {
        return std::nullopt;
    }
    const std::size_t count = matches(pattern).size();
    if (count == 0) {
        throw MediaError(fmt::format("There is no file that '{}' stands for.", pattern));
    }
    return SequenceName{pattern, 1, static_cast<int>(count), true};
}

std::vector<std::string> filesNamed(const std::string& name) {
    std::error_code ignored;
    if (fs::exists(name, ignored)) {
        return {name};
    }
    std::vector<std::string> files;
    if (const auto sequence = parseSequenceName(name)) {
        for (const int number : numbersOf(*sequence)) {
            files.push_back(sequence->fileName(number));
        }
        return files;
    }
    return name.find_first_of("*?[") == std::string::npos ? files : matches(name);
}

std::string lowerExtension(const std::string& path) {
    std::string extension = fs::path(path).extension().string();
    for (char& c : extension) {
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    return extension.empty() ? extension : extension.substr(1);
}

}  // namespace lumiset::media
