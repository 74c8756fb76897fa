// The assembler copies the files into the program's data; its include path leads to them. Nothing but these lines uses
// a section other than the one for code, which the last line goes back to.

#include "media/embedded_files.h"

// NOLINTBEGIN: symbols that the assembler defines
#define LUMISET_EMBEDDED(NAME, FILE)                       \
    __asm__(                                               \
        ".section .rodata,\"a\"\n"                         \
        ".globl lumisetEmbedded" #NAME                     \
        "\n"                                               \
        ".globl lumisetEmbeddedEnd" #NAME                  \
        "\n"                                               \
        "lumisetEmbedded" #NAME ": .incbin \"" FILE        \
        "\"\n"                                             \
        "lumisetEmbeddedEnd" #NAME                         \
        ": .byte 0\n"                                      \
        ".text\n");                                        \
    extern "C" const std::uint8_t lumisetEmbedded##NAME[]; \
    extern "C" const std::uint8_t lumisetEmbeddedEnd##NAME[];
// NOLINTEND

LUMISET_EMBEDDED(Landscape, "landscape.png")
LUMISET_EMBEDDED(LandscapeSmall, "landscape_small.png")
LUMISET_EMBEDDED(Portrait, "portrait.png")
LUMISET_EMBEDDED(PortraitSmall, "portrait_small.png")
LUMISET_EMBEDDED(Title, "title.png")
LUMISET_EMBEDDED(Cloud, "cloud.png")
LUMISET_EMBEDDED(Balloon, "balloon.png")
LUMISET_EMBEDDED(Font, "DejaVuSans.ttf")

namespace lumiset::media {

std::span<const std::uint8_t> embeddedFile(EmbeddedFile file) {
    switch (file) {
        case EmbeddedFile::kLandscape:
            return {lumisetEmbeddedLandscape, lumisetEmbeddedEndLandscape};
        case EmbeddedFile::kLandscapeSmall:
            return {lumisetEmbeddedLandscapeSmall, lumisetEmbeddedEndLandscapeSmall};
        case EmbeddedFile::kPortrait:
            return {lumisetEmbeddedPortrait, lumisetEmbeddedEndPortrait};
        case EmbeddedFile::kPortraitSmall:
            return {lumisetEmbeddedPortraitSmall, lumisetEmbeddedEndPortraitSmall};
        case EmbeddedFile::kTitle:
            return {lumisetEmbeddedTitle, lumisetEmbeddedEndTitle};
        case EmbeddedFile::kCloud:
            return {lumisetEmbeddedCloud, lumisetEmbeddedEndCloud};
        case EmbeddedFile::kBalloon:
            return {lumisetEmbeddedBalloon, lumisetEmbeddedEndBalloon};
        case EmbeddedFile::kFont:
            break;
    }
    return {lumisetEmbeddedFont, lumisetEmbeddedEndFont};
}

}  // namespace lumiset::media
