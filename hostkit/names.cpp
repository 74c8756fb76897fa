#include "hostkit/names.h"

#include <algorithm>
#include <cstddef>

namespace lumiset::hostkit {
namespace {

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::string lowered(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), lower);
    return result;
}

std::size_t editDistance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> beforeLast(b.size() + 1);
    std::vector<std::size_t> last(b.size() + 1);
    std::vector<std::size_t> current(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j) {
        current[j] = j;
    }
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::swap(beforeLast, last);
        std::swap(last, current);
        current[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t replaced = last[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            current[j] = std::min({replaced, last[j] + 1, current[j - 1] + 1});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
                current[j] = std::min(current[j], beforeLast[j - 2] + 1);
            }
        }
    }
    return current[b.size()];
}

}  // namespace

bool equalIgnoringCase(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) { return lower(x) == lower(y); });
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r\n";
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::string identifierOf(std::string_view name) {
    std::string identifier;
    for (const char c : name) {
        const bool capital = c >= 'A' && c <= 'Z';
        const bool kept = (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
        identifier += capital ? static_cast<char>(c - 'A' + 'a') : kept ? c : '_';
    }
    return identifier;
}

std::vector<std::string> nearestNames(std::string_view name, const std::vector<std::string>& candidates) {
    struct Near {
        std::size_t distance;
        const std::string* text;
    };
    const std::string wanted = lowered(trimmed(name));
    std::vector<Near> found;
    for (const std::string& candidate : candidates) {
        const std::string given = lowered(candidate);
        const std::size_t distance = editDistance(wanted, given);
        const bool isPart = wanted.size() >= 3 && given.find(wanted) != std::string::npos;
        if (isPart) {
            found.push_back({0, &candidate});
        } else if (distance <= std::max<std::size_t>(1, given.size() / 3)) {
            found.push_back({distance, &candidate});
        }
    }
    std::stable_sort(found.begin(), found.end(), [](const Near& a, const Near& b) { return a.distance < b.distance; });
    std::vector<std::string> result;
    for (const Near& near : found) {
        if (result.size() < 3 && std::find(result.begin(), result.end(), *near.text) == result.end()) {
            result.push_back(*near.text);
        }
    }
    return result;
}

std::string didYouMean(std::string_view name, const std::vector<std::string>& candidates) {
    const std::vector<std::string> near = nearestNames(name, candidates);
    return near.empty() ? std::string() : " Did you mean " + quotedList(near) + "?";
}

std::string shellWord(const std::string& text) {
    constexpr std::string_view kPlain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-+=:,./%@";
    if (!text.empty() && text.find_first_not_of(kPlain) == std::string::npos) {
        return text;
    }
    std::string quoted = "'";
    for (const char c : text) {
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return quoted + '\'';
}

std::string quotedList(const std::vector<std::string>& names) {
    std::string text;
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (i > 0) {
            text += i + 1 == names.size() ? " or " : ", ";
        }
        text += '"' + names[i] + '"';
    }
    return text;
}

}  // namespace lumiset::hostkit
