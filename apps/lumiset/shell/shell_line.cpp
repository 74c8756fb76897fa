#include "apps/lumiset/shell/shell_line.h"

namespace lumiset::app {
namespace {

bool contains(std::string_view characters, char c) {
    return characters.find(c) != std::string_view::npos;
}

bool isSpace(char c) {
    return contains(" \t\n", c);
}

/// Between double quotes a backslash is one unless it stands before one of these.
constexpr std::string_view kSpecialInDoubleQuotes = "\"\\$`";

}  // namespace

std::vector<ShellWord> splitShellLine(std::string_view line, std::string_view breaks) {
    std::vector<ShellWord> words;
    ShellWord word;
    bool begun = false;
    std::size_t keptUnquoted = 0;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const char c = line[i];
        const char next = i + 1 < line.size() ? line[i + 1] : '\0';
        if (word.openQuote == '\0' && isSpace(c)) {
            if (begun) {
                words.push_back(word);
            }
            word = {};
            begun = false;
            continue;
        }
        begun = true;
        if (word.openQuote != '\0' ? c == word.openQuote : c == '"' || c == '\'') {
            const bool opens = word.openQuote == '\0';
            word.openQuote = opens ? c : '\0';
            // Behind an opening quote bash completes afresh; once it is closed the quotes belong to what is replaced.
            keptUnquoted = opens ? word.keptBytes : keptUnquoted;
            word.keptBytes = opens ? word.text.size() : keptUnquoted;
        } else if (c == '\\' && word.openQuote != '\'' &&
                   (word.openQuote == '\0' || contains(kSpecialInDoubleQuotes, next))) {
            if (next != '\0') {
                word.text += next;
                ++i;
            }
        } else {
            word.text += c;
            if (word.openQuote == '\0' && contains(breaks, c)) {
                word.keptBytes = word.text.size();
            }
        }
    }
    words.push_back(word);
    return words;
}

std::string bashReplacement(const ShellWord& typed, const std::string& candidate) {
    std::string text;
    for (const char c : candidate.substr(std::min(typed.keptBytes, candidate.size()))) {
        if (typed.openQuote == '\'' && c == '\'') {
            text += "'\\'";
        } else if (typed.openQuote == '"' ? contains(kSpecialInDoubleQuotes, c)
                                          : typed.openQuote == '\0' && contains(" \t\"'\\$`&|;<>()[]{}*?!#~", c)) {
            text += '\\';
        }
        text += c;
    }
    return text;
}

}  // namespace lumiset::app
