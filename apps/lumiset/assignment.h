#pragma once

#include <string>

#include "apps/lumiset/command_line.h"
#include "hostkit/names.h"

namespace lumiset::app {

struct Assignment {
    std::string name;
    std::string value;
};

/// The two sides of the first "=". `option` and `form` are for the message. Throws `UsageError`.
inline Assignment splitAssignment(const std::string& text, const std::string& option, const std::string& form) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos || hostkit::trimmed(text.substr(0, equals)).empty()) {
        throw UsageError(option + " takes \"" + form + "\", not \"" + text + "\".");
    }
    return {text.substr(0, equals), text.substr(equals + 1)};
}

}  // namespace lumiset::app
