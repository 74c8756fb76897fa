#include "apps/lumiset/render/time_text.h"

#include <algorithm>

#include "apps/lumiset/usage_error.h"
#include "hostkit/parameter_text.h"

namespace lumiset::app {
namespace {

/// Beyond the end of everything, and a number of microseconds all the same.
constexpr double kLatest = 1e9;

}  // namespace

double parseTime(const std::string& text, const std::string& option) {
    double seconds = 0.0;
    std::string_view rest = text;
    for (int part = 0;; ++part) {
        const std::size_t colon = rest.find(':');
        double number = 0.0;
        if (part > 2 || !hostkit::parseNumber(rest.substr(0, colon), number) || number < 0.0) {
            std::string sentence = option;
            sentence.append(" takes seconds or [hours:]minutes:seconds, not \"").append(text).append("\".");
            throw UsageError(sentence);
        }
        seconds = seconds * 60.0 + number;
        if (colon == std::string_view::npos) {
            return std::min(seconds, kLatest);
        }
        rest.remove_prefix(colon + 1);
    }
}

}  // namespace lumiset::app
