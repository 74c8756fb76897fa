// The assembler copies the files into the library's constant data; its include path leads to them.

#include "platform/resource.h"

// NOLINTBEGIN: symbols that the assembler defines
#define LUMISET_RESOURCE(ID)                                                                   \
    __asm__(                                                                                   \
        ".pushsection .rodata\n"                                                               \
        ".globl lumisetResource" #ID                                                           \
        "\n"                                                                                   \
        ".hidden lumisetResource" #ID                                                          \
        "\n"                                                                                   \
        ".globl lumisetResourceEnd" #ID                                                        \
        "\n"                                                                                   \
        ".hidden lumisetResourceEnd" #ID                                                       \
        "\n"                                                                                   \
        "lumisetResource" #ID ": .incbin \"" #ID                                               \
        ".png\"\n"                                                                             \
        "lumisetResourceEnd" #ID                                                               \
        ": .byte 0\n"                                                                          \
        ".popsection\n");                                                                      \
    extern "C" __attribute__((visibility("hidden"))) const std::uint8_t lumisetResource##ID[]; \
    extern "C" __attribute__((visibility("hidden"))) const std::uint8_t lumisetResourceEnd##ID[];
// NOLINTEND

LUMISET_RESOURCE(501)
LUMISET_RESOURCE(601)
LUMISET_RESOURCE(701)
LUMISET_RESOURCE(801)

namespace lumiset::platform {

std::span<const std::uint8_t> findResource(std::uint32_t id) noexcept {
    switch (id) {
        case 501:
            return {lumisetResource501, lumisetResourceEnd501};
        case 601:
            return {lumisetResource601, lumisetResourceEnd601};
        case 701:
            return {lumisetResource701, lumisetResourceEnd701};
        case 801:
            return {lumisetResource801, lumisetResourceEnd801};
        default:
            return {};
    }
}

}  // namespace lumiset::platform
