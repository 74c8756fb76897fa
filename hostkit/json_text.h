#pragma once

#include <array>
#include <charconv>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <vector>

namespace lumiset::hostkit {

/// Keeps the order of keys, so that files stay as people wrote them.
using Json = nlohmann::ordered_json;

/// A text is not the JSON that was asked for; the message is one or more whole sentences.
class JsonError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// What a file of a kind may have at most.
struct JsonLimits {
    const char* kind;  ///< "a preset", for messages
    int depth;         ///< nested objects and lists
};

/// Reads a text that anybody may have written. Throws `JsonError` for what is not JSON in UTF-8, is nested deeper than
/// allowed, has a key twice in one object or more than 1000 keys in one, or a text of more than 1000 bytes.
[[nodiscard]] Json parseJson(const std::string& text, const JsonLimits& limits);

/// What `json` has under a key, which it must have, of the type that `isRight` asks for. `what` says in a few words
/// what stands there: "a text". Throws `JsonError`.
[[nodiscard]] const Json& jsonMember(const Json& json, const char* key, bool (Json::*isRight)() const noexcept,
                                     const char* what, const JsonLimits& limits);

/// Throws `JsonError` unless `json` is an object whose keys are all among `known`.
void checkJsonKeys(const Json& json, const std::vector<std::string>& known, const std::string& whose);

/// The number with as few digits as `isEnough` wants.
template <class IsEnough>
double shortenedNumber(double number, const IsEnough& isEnough) {
    for (int digits = 1; digits < 17; ++digits) {
        std::array<char, 32> buffer{};
        const char* end =
            std::to_chars(buffer.data(), buffer.data() + buffer.size(), number, std::chars_format::general, digits).ptr;
        double candidate = 0.0;
        std::from_chars(buffer.data(), end, candidate);
        if (isEnough(candidate)) {
            return candidate;
        }
    }
    return number;
}

}  // namespace lumiset::hostkit
