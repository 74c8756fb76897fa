#include "support/preset_markup.h"

#include <tinyxml.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string>
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

/// Whether XML allows the character in a text. It refuses the two noncharacters of the first plane alone, and delete is
/// refused here beside the control characters.
constexpr bool isTextCharacter(std::uint32_t code) {
    const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
    return code >= 0x20 && code != 0x7F && !isSurrogate && code != 0xFFFE && code != 0xFFFF && code <= 0x10FFFF;
}

void appendUtf8(std::string& text, std::uint32_t code) {
    if (code < 0x80) {
        text += static_cast<char>(code);
        return;
    }
    const int following = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
    constexpr std::array<unsigned, 4> kLead = {0, 0xC0, 0xE0, 0xF0};
    text += static_cast<char>(kLead[static_cast<std::size_t>(following)] | (code >> (6 * following)));
    for (int i = following - 1; i >= 0; --i) {
        text += static_cast<char>(0x80U | ((code >> (6 * i)) & 0x3FU));
    }
}

/// Walks over the text; every `take` answers whether what it is named after stood there. Every node belongs to the
/// document before the next allocation, so none is lost when memory runs out.
class Scanner {
public:
    explicit Scanner(std::string_view text) : m_rest(text) {}

    bool takeDocument(TiXmlDocument& document) {
        takeToken("\xEF\xBB\xBF");
        TiXmlElement declaration("xml");
        if (m_rest.substr(0, 5) == "<?xml" && !takeDeclaration(declaration)) {
            return false;
        }
        return takeMisc() && takeElements(document) && takeMisc() && m_rest.empty();
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

    bool takeReference(std::string& value) {
        struct Reference {
            std::string_view text;
            char character;
        };
        constexpr std::array<Reference, 5> kReferences = {
            {{"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}}};
        const auto* const found = std::find_if(kReferences.begin(), kReferences.end(),
                                               [this](const Reference& each) { return takeToken(each.text); });
        if (found == kReferences.end()) {
            return takeNumericReference(value);
        }
        value += found->character;
        return true;
    }

    /// To a character that may stand in a text as it is.
    bool takeNumericReference(std::string& value) {
        if (!takeToken("&#")) {
            return false;
        }
        const int base = takeToken("x") ? 16 : 10;
        std::uint32_t code = 0;
        const auto [end, error] = std::from_chars(m_rest.data(), m_rest.data() + m_rest.size(), code, base);
        if (error != std::errc() || !isTextCharacter(code)) {
            return false;
        }
        m_rest.remove_prefix(static_cast<std::size_t>(end - m_rest.data()));
        appendUtf8(value, code);
        return takeToken(";");
    }

    bool takeValue(std::string& value) {
        const char quote = m_rest.empty() ? '\0' : m_rest.front();
        if (quote != '"' && quote != '\'') {
            return false;
        }
        m_rest.remove_prefix(1);
        while (!m_rest.empty() && m_rest.front() != quote) {
            if (m_rest.front() == '&') {
                if (!takeReference(value)) {
                    return false;
                }
            } else if (m_rest.front() == '<' || static_cast<unsigned char>(m_rest.front()) < 0x20) {
                return false;
            } else {
                value += m_rest.front();
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
    bool takeAttributes(TiXmlElement& element) {
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
            std::string value;
            if (!takeValue(value)) {
                return false;
            }
            element.SetAttribute(std::string(name), value);
        }
        return true;
    }

    /// The form with a bare ">" is the one that new preset files start from.
    bool takeDeclaration(TiXmlElement& declaration) {
        return takeToken("<?xml") && takeAttributes(declaration) && (takeToken("?>") || takeToken(">"));
    }

    /// White space and comments. False for a comment without an end, or with two hyphens before it.
    bool takeMisc() {
        for (;;) {
            takeBlanks();
            if (!takeToken("<!--")) {
                return true;
            }
            m_rest.remove_prefix(std::min(m_rest.find("--"), m_rest.size()));
            if (!takeToken("-->")) {
                return false;
            }
        }
    }

    /// The root element with all that it holds.
    bool takeElements(TiXmlDocument& document) {
        std::vector<TiXmlNode*> open{&document};
        std::size_t count = 0;
        do {
            std::string_view name;
            if (!takeMisc()) {
                return false;
            }
            if (open.size() > 1 && takeToken("</")) {
                if (!takeName(name) || name != open.back()->ValueStr()) {
                    return false;
                }
                takeBlanks();
                if (!takeToken(">")) {
                    return false;
                }
                open.pop_back();
                continue;
            }
            if (++count > kMaxElements || !takeToken("<") || !takeName(name)) {
                return false;
            }
            TiXmlNode* const element = open.back()->LinkEndChild(new TiXmlElement(std::string(name)));
            if (!takeAttributes(*element->ToElement())) {
                return false;
            }
            if (!takeToken("/>")) {
                if (!takeToken(">") || open.size() > kMaxDepth) {
                    return false;
                }
                open.push_back(element);
            }
        } while (open.size() > 1);
        return true;
    }

    std::string_view m_rest;
};

bool isPlainText(std::string_view text) {
    const bool isPlain = std::none_of(text.begin(), text.end(), [](char character) {
        const auto byte = static_cast<unsigned char>(character);
        return (byte < 0x20 && !isBlank(character)) || byte == 0x7F;
    });
    constexpr std::string_view kNoncharacters[] = {"\xEF\xBF\xBE", "\xEF\xBF\xBF"};
    return isPlain && text.find(kNoncharacters[0]) == std::string_view::npos &&
           text.find(kNoncharacters[1]) == std::string_view::npos && platform::fromUtf8(text);
}

}  // namespace

bool readPresetMarkup(std::string_view text, TiXmlDocument& document) {
    return isPlainText(text) && Scanner(text).takeDocument(document);
}

}  // namespace lumiset
