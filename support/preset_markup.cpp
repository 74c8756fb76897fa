#include "support/preset_markup.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <system_error>
#include <vector>

#include "platform/text.h"

namespace lumiset {
namespace {

constexpr std::size_t kMaxDepth = 8;
constexpr std::size_t kMaxElements = 4096;
constexpr std::size_t kMaxAttributes = 16;

constexpr bool isBlank(char character) {
    return character == ' ' || character == '\t' || character == '\n' || character == '\r';
}

constexpr bool isNameStart(char character) {
    return (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z') || character == '_';
}

constexpr bool isNamePart(char character) {
    return isNameStart(character) || (character >= '0' && character <= '9') || character == '-' || character == '.';
}

/// Walks over the text; every `take` answers whether what it is named after stood there.
class Scanner {
public:
    explicit Scanner(std::string_view text) : m_rest(text) {}

    bool takeDocument() {
        takeToken("\xEF\xBB\xBF");
        if (m_rest.substr(0, 5) == "<?xml" && !takeDeclaration()) {
            return false;
        }
        return takeMisc() && takeElements() && takeMisc() && m_rest.empty();
    }

private:
    bool takeToken(std::string_view token) {
        if (m_rest.substr(0, token.size()) != token) {
            return false;
        }
        m_rest.remove_prefix(token.size());
        return true;
    }

    bool takeBlanks() {
        const auto* end = std::find_if_not(m_rest.begin(), m_rest.end(), isBlank);
        const auto count = static_cast<std::size_t>(end - m_rest.begin());
        m_rest.remove_prefix(count);
        return count > 0;
    }

    bool takeName(std::string_view& name) {
        if (m_rest.empty() || !isNameStart(m_rest.front())) {
            return false;
        }
        const auto* end = std::find_if_not(m_rest.begin(), m_rest.end(), isNamePart);
        name = m_rest.substr(0, static_cast<std::size_t>(end - m_rest.begin()));
        m_rest.remove_prefix(name.size());
        return true;
    }

    bool takeReference() {
        constexpr std::array<std::string_view, 5> kReferences = {"&amp;", "&lt;", "&gt;", "&quot;", "&apos;"};
        return takeNumericReference() ||
               std::any_of(kReferences.begin(), kReferences.end(),
                           [this](std::string_view reference) { return takeToken(reference); });
    }

    /// To a character that may stand in a text as it is.
    bool takeNumericReference() {
        if (!takeToken("&#")) {
            return false;
        }
        const int base = takeToken("x") ? 16 : 10;
        std::uint32_t code = 0;
        const auto [end, error] = std::from_chars(m_rest.data(), m_rest.data() + m_rest.size(), code, base);
        const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
        if (error != std::errc() || code < 0x20 || code == 0x7F || code > 0x10FFFF || isSurrogate) {
            return false;
        }
        m_rest.remove_prefix(static_cast<std::size_t>(end - m_rest.data()));
        return takeToken(";");
    }

    bool takeValue() {
        const char quote = m_rest.empty() ? '\0' : m_rest.front();
        if (quote != '"' && quote != '\'') {
            return false;
        }
        m_rest.remove_prefix(1);
        while (!m_rest.empty() && m_rest.front() != quote) {
            if (m_rest.front() == '&') {
                if (!takeReference()) {
                    return false;
                }
            } else if (m_rest.front() == '<' || static_cast<unsigned char>(m_rest.front()) < 0x20) {
                return false;
            } else {
                m_rest.remove_prefix(1);
            }
        }
        if (m_rest.empty()) {
            return false;
        }
        m_rest.remove_prefix(1);
        return true;
    }

    /// Attributes, each behind white space and each name once, and the white space behind the last.
    bool takeAttributes() {
        std::array<std::string_view, kMaxAttributes> names;
        std::size_t count = 0;
        while (takeBlanks() && !m_rest.empty() && isNameStart(m_rest.front())) {
            std::string_view name;
            if (!takeName(name) || count == kMaxAttributes) {
                return false;
            }
            const auto known = names.begin() + static_cast<std::ptrdiff_t>(count);
            if (std::find(names.begin(), known, name) != known) {
                return false;
            }
            names[count++] = name;
            takeBlanks();
            if (!takeToken("=")) {
                return false;
            }
            takeBlanks();
            if (!takeValue()) {
                return false;
            }
        }
        return true;
    }

    /// The form with a bare ">" is the one that new preset files start from.
    bool takeDeclaration() { return takeToken("<?xml") && takeAttributes() && (takeToken("?>") || takeToken(">")); }

    /// White space and comments. False for a comment without an end.
    bool takeMisc() {
        for (;;) {
            takeBlanks();
            if (!takeToken("<!--")) {
                return true;
            }
            const std::size_t end = m_rest.find("-->");
            if (end == std::string_view::npos) {
                return false;
            }
            m_rest.remove_prefix(end + 3);
        }
    }

    /// The root element with all that it holds.
    bool takeElements() {
        std::vector<std::string_view> open;
        std::size_t count = 0;
        do {
            std::string_view name;
            if (!takeMisc()) {
                return false;
            }
            if (!open.empty() && takeToken("</")) {
                if (!takeName(name) || name != open.back()) {
                    return false;
                }
                takeBlanks();
                if (!takeToken(">")) {
                    return false;
                }
                open.pop_back();
                continue;
            }
            if (++count > kMaxElements || !takeToken("<") || !takeName(name) || !takeAttributes()) {
                return false;
            }
            if (!takeToken("/>")) {
                if (!takeToken(">") || open.size() == kMaxDepth) {
                    return false;
                }
                open.push_back(name);
            }
        } while (!open.empty());
        return true;
    }

    std::string_view m_rest;
};

bool isPlainText(std::string_view text) {
    return std::none_of(text.begin(), text.end(), [](char character) {
        const auto byte = static_cast<unsigned char>(character);
        return (byte < 0x20 && !isBlank(character)) || byte == 0x7F;
    });
}

}  // namespace

bool isPresetMarkup(std::string_view text) {
    return isPlainText(text) && platform::fromUtf8(text) && Scanner(text).takeDocument();
}

}  // namespace lumiset
