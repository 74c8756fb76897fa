#include "apps/lumiset/media/input_name.h"

#include <cctype>
#include <filesystem>
#include <regex>
#include <set>

#include <fmt/format.h>

#include "apps/lumiset/media/media.h"

namespace fs = std::filesystem;

namespace lumiset::media {
namespace {

const std::regex& patternRegex() {
    static const std::regex regex("%(0([0-9]))?d");
    return regex;
}

// The number that a file name holds where the pattern has its %d.
std::optional<int> numberIn(const std::string& name, const std::string& before, const std::string& after, int digits) {
    if (name.size() <= before.size() + after.size() || !name.starts_with(before) || !name.ends_with(after)) {
        return std::nullopt;
    }
    const std::string text = name.substr(before.size(), name.size() - before.size() - after.size());
    const bool numeric = text.find_first_not_of("0123456789") == std::string::npos;
    if (!numeric || text.size() > 9 || fmt::format("{:0{}}", std::stoi(text), digits) != text) {
        return std::nullopt;
    }
    return std::stoi(text);
}

}  // namespace

std::string SequenceName::fileName(int number) const {
    std::smatch match;
    std::regex_search(pattern, match, patternRegex());
    const int digits = match[2].matched ? std::stoi(match[2].str()) : 1;
    return match.prefix().str() + fmt::format("{:0{}}", number, digits) + match.suffix().str();
}

std::optional<SequenceName> parseSequenceName(const std::string& name) {
    std::error_code ignored;
    if (!std::regex_search(name, patternRegex()) || fs::exists(name, ignored)) {
        return std::nullopt;
    }
    static const std::regex withRange("(.*):([0-9]{1,9})(-([0-9]{1,9}))?");
    std::smatch match;
    if (!std::regex_match(name, match, withRange)) {
        return SequenceName{name, std::nullopt, std::nullopt};
    }
    SequenceName sequence{match[1].str(), std::stoi(match[2].str()), std::nullopt};
    if (match[4].matched) {
        sequence.last = std::stoi(match[4].str());
        if (*sequence.last < *sequence.first) {
            throw MediaError(fmt::format("The range of '{}' ends before it begins.", name));
        }
    }
    return sequence;
}

void findSequence(SequenceName& sequence) {
    const fs::path path(sequence.pattern);
    const std::string name = path.filename().string();
    std::smatch match;
    if (!std::regex_search(name, match, patternRegex())) {
        throw MediaError(
            fmt::format("'{}' has its number in a folder's name; it has to be in the file's.", path.string()));
    }
    const int digits = match[2].matched ? std::stoi(match[2].str()) : 1;
    std::set<int> numbers;
    std::error_code error;
    const fs::path folder = path.has_parent_path() ? path.parent_path() : fs::path(".");
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        const auto number = numberIn(entry->path().filename().string(), match.prefix(), match.suffix(), digits);
        if (number && *number >= sequence.first.value_or(0) && *number <= sequence.last.value_or(*number)) {
            numbers.insert(*number);
        }
    }
    if (error) {
        throw MediaError(fmt::format("Cannot read the folder '{}': {}.", folder.string(), error.message()));
    }
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

std::string lowerExtension(const std::string& path) {
    std::string extension = fs::path(path).extension().string();
    for (char& c : extension) {
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    return extension.empty() ? extension : extension.substr(1);
}

}  // namespace lumiset::media
