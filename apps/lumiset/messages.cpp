#include "apps/lumiset/messages.h"

#include "platform/standard_streams.h"

namespace lumiset::app {

void tell(const std::string& text) noexcept {
    platform::writeText(platform::Stream::kError, text);
}

std::string printable(std::string text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const auto next = static_cast<unsigned char>(i + 1 < text.size() ? text[i + 1] : '\0');
        if (byte < 0x20 || byte == 0x7F) {
            text[i] = '?';
        } else if (byte == 0xC2 && next >= 0x80 && next < 0xA0) {  // U+0080 to U+009F
            text.replace(i, 2, "?");
        }
    }
    return text;
}

}  // namespace lumiset::app
