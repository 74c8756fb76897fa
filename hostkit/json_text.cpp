#include "hostkit/json_text.h"

#include <algorithm>
#include <set>

#include "hostkit/names.h"

namespace lumiset::hostkit {
namespace {

// What takes longer than it should, or fills the screen, when it is refused by name.
constexpr std::size_t kMaxMembers = 1000;
constexpr std::size_t kMaxTextBytes = 1000;

/// Sees the parts of a text while it is read, and throws for what nothing of this kind has.
class PartChecker {
public:
    explicit PartChecker(const JsonLimits& limits) : m_limits(limits) {}

    bool operator()(int depth, Json::parse_event_t event, const Json& part) {
        switch (event) {
            case Json::parse_event_t::object_start:
                m_keys.emplace_back();
                [[fallthrough]];
            case Json::parse_event_t::array_start:
                if (depth >= m_limits.depth) {
                    throw JsonError(std::string("It is nested deeper than ") + m_limits.kind + '.');
                }
                break;
            case Json::parse_event_t::object_end:
                m_keys.pop_back();
                break;
            case Json::parse_event_t::key:
                checkText(part);
                if (!m_keys.back().insert(part.get<std::string>()).second) {
                    throw JsonError('"' + part.get<std::string>() + "\" stands there twice.");
                }
                if (m_keys.back().size() > kMaxMembers) {
                    throw JsonError("It has more values than any effect.");
                }
                break;
            default:
                checkText(part);
        }
        return true;
    }

private:
    static void checkText(const Json& part) {
        if (part.is_string() && part.get_ref<const std::string&>().size() > kMaxTextBytes) {
            throw JsonError("A text in it is too long.");
        }
    }

    JsonLimits m_limits;
    std::vector<std::set<std::string>> m_keys;  // of each object around this place
};

}  // namespace

Json parseJson(const std::string& text, const JsonLimits& limits) {
    try {
        return Json::parse(text, PartChecker(limits));
    } catch (const Json::parse_error& error) {
        const std::size_t end = std::min(error.byte, text.size());
        const auto line = 1 + std::count(text.data(), text.data() + end - (end > 0 ? 1 : 0), '\n');
        throw JsonError("It is not JSON; see line " + std::to_string(line) + '.');
    } catch (const Json::exception&) {
        throw JsonError("A number in it is too large.");
    }
}

const Json& jsonMember(const Json& json, const char* key, bool (Json::*isRight)() const noexcept, const char* what,
                       const JsonLimits& limits) {
    if (!json.contains(key) || !(json[key].*isRight)()) {
        std::string kind = limits.kind;
        kind.front() = static_cast<char>(kind.front() - 'a' + 'A');
        throw JsonError(kind + " has \"" + key + "\", " + what + '.');
    }
    return json[key];
}

void checkJsonKeys(const Json& json, const std::vector<std::string>& known, const std::string& whose) {
    if (!json.is_object()) {
        throw JsonError(whose + " is a JSON object.");
    }
    for (const auto& [key, value] : json.items()) {
        if (std::find(known.begin(), known.end(), key) == known.end()) {
            throw JsonError(whose + " has " + quotedList(known) + ", not \"" + key + "\".");
        }
    }
}

}  // namespace lumiset::hostkit
