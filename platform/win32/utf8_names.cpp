// Linked into programs. The C++ library makes a path of 8-bit text by the C library's conversion of characters, for
// which Windows has no locale in UTF-8. This one takes its place, by the linker's option --wrap.

#include <cerrno>
#include <cwchar>

#include "platform/text.h"

namespace {

constexpr std::size_t kBad = static_cast<std::size_t>(-1);
constexpr std::size_t kPartial = static_cast<std::size_t>(-2);

std::size_t bytesOf(unsigned char first) {
    return first < 0x80 ? 1 : first >> 5 == 6 ? 2 : first >> 4 == 14 ? 3 : first >> 3 == 30 ? 4 : 0;
}

}  // namespace

/// Characters that take two wide ones come in two calls: the first takes all their bytes but one and leaves the second
/// wide one in the state.
extern "C" std::size_t __wrap_mbrtowc(wchar_t* wide, const char* text, std::size_t size, std::mbstate_t* state) {
    static std::mbstate_t s_state{};
    std::mbstate_t& waiting = state != nullptr ? *state : s_state;
    if (text == nullptr) {
        waiting = {};
        return 0;
    }
    if (waiting != 0) {
        if (wide != nullptr) {
            *wide = static_cast<wchar_t>(waiting);
        }
        waiting = {};
        return 1;
    }
    if (size == 0) {
        return kPartial;
    }
    const std::size_t bytes = bytesOf(static_cast<unsigned char>(*text));
    if (bytes > size) {
        return kPartial;
    }
    const auto character = bytes > 0 ? lumiset::platform::fromUtf8({text, bytes}) : std::nullopt;
    if (!character) {
        errno = EILSEQ;
        return kBad;
    }
    if (wide != nullptr) {
        *wide = character->front();
    }
    if (character->size() == 2) {
        waiting = character->back();
        return bytes - 1;
    }
    return *text == '\0' ? 0 : bytes;
}
