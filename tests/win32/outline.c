// "Outline" shows in its picture whether each field of the records was read at its place.

#include <string.h>

#include "call.h"
#include "rendering.h"
#include "suites.h"

static Picture source;
static Picture target;

// True when the band reaches `distance` pixels above the opaque square; its colour is red.
static int bandReaches(int32_t distance) {
    return isPixel(&target, 50, 40 - distance, 0, 0, 255, 255);
}

// A frame of 440 by 420 pixels is cut for the host's threads, and is the same as on one.
static void checkThreads(Word effect) {
    static Picture alone;
    makePicture(&source, 440, 420, 0, 4, 0);
    for (int32_t i = 0; i < 400; ++i) {
        putPixel(&source, i, i, 255, 255, 255, 255);
    }
    HostObject host;
    initHost(&host);
    uint8_t info[INFO_SIZE];
    plainInfo(info);
    makePicture(&alone, 440, 420, 0, 4, 0);
    CHECK(render(effect, &host, &source, &alone, info));
    host.threads = 3;
    makePicture(&target, 440, 420, 0, 4, 0);
    CHECK(render(effect, &host, &source, &target, info));
    CHECK(host.runs > 0);
    CHECK(memcmp(target.memory, alone.memory, sizeof target.memory) == 0);
}

void checkOutline(Word effect) {
    about("Outline, record fields");
    uint8_t param[PARAM_INFO_SIZE];
    CHECK(ASK(EFFECT_PARAM_INFO, effect, 2, WORD(param)));
    CHECK(strcmp((const char*)param + PARAM_INFO_LABEL, "Color") == 0);
    CHECK(wordAt(param, PARAM_INFO_RECT) == 0 && wordAt(param, PARAM_INFO_RECT + 4) == 90);
    CHECK(wordAt(param, PARAM_INFO_RECT + 8) == 198 && wordAt(param, PARAM_INFO_RECT + 12) == 30);
    CHECK(ASK(EFFECT_PARAM_INFO, effect, 0, WORD(param)));
    CHECK(floatAt(param, PARAM_INFO_DEFAULT) == 0.5F && floatAt(param, PARAM_INFO_MAXIMUM) == 100);
    uint32_t value[2];
    CHECK(strcmp(NAME(EFFECT_PRESET_NAME, effect, 2), "Bold Red") == 0);
    CHECK(ASK(EFFECT_PRESET_VALUE, effect, 2, 2, WORD(value)) && value[0] == 0x0000FF);

    makePicture(&source, 100, 100, 0, 4, 0);
    for (int32_t y = 40; y < 60; ++y) {
        for (int32_t x = 40; x < 60; ++x) {
            putPixel(&source, x, y, 255, 255, 255, 255);
        }
    }
    HostObject host;
    initHost(&host);
    setHostValue(&host, 0, floatBits(1), 0);  // a band of five pixels on each side,
    setHostValue(&host, 1, floatBits(0), 0);  // with hard edges,
    setHostValue(&host, 2, 0x0000FF, 0);      // red,
    setHostValue(&host, 3, floatBits(1), 0);  // opaque
    uint8_t info[INFO_SIZE];
    plainInfo(info);
    makePicture(&target, 100, 100, 0, 4, 0);
    CHECK(render(effect, &host, &source, &target, info));
    CHECK(isPixel(&target, 50, 50, 255, 255, 255, 255) && bandReaches(2) && bandReaches(4) && !bandReaches(7));
    CHECK(host.asked == 4 && host.types[0] == PARAM_SLIDER && host.types[2] == PARAM_COLOR);
    CHECK(host.blocksEver > 0);

    // Pixels twice as wide as high make the band half as high in rows; without the flag nothing changes.
    putDouble(info, INFO_PIXEL_ASPECT, 2.0);
    CHECK(render(effect, &host, &source, &target, info) && bandReaches(4));
    putWord(info, INFO_FLAGS, INFO_HAS_PIXEL_ASPECT);
    CHECK(render(effect, &host, &source, &target, info) && bandReaches(2) && !bandReaches(4));
    // So does a field, whose rows are twice as far apart, when the host says that it renders fields.
    plainInfo(info);
    putWord(info, INFO_FIELD, 0xCCCC0001u);
    CHECK(render(effect, &host, &source, &target, info) && bandReaches(4));
    putWord(info, INFO_FLAGS, INFO_HAS_FIELD);
    CHECK(render(effect, &host, &source, &target, info) && bandReaches(2) && !bandReaches(4));

    // A record over the same memory from the last row upwards is the same picture.
    plainInfo(info);
    CHECK(render(effect, &host, &source, &target, info));
    makePicture(&target, 100, 100, 0, 4, 0);
    putAddress(source.record, FRAME_DATA, pixelOf(&source, 0, 99));
    putWord(source.record, FRAME_STRIDE, (uint32_t)-400);
    putAddress(target.record, FRAME_DATA, pixelOf(&target, 0, 99));
    putWord(target.record, FRAME_STRIDE, (uint32_t)-400);
    CHECK(render(effect, &host, &source, &target, info));
    CHECK(isPixel(&target, 50, 50, 255, 255, 255, 255) && bandReaches(4) && !bandReaches(7));
    checkThreads(effect);
}
