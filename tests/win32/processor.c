// Every slot of the frame processor with a picture of a few pixels, whose result is known by hand and differs from
// what any other slot would make of it.

#include <string.h>

#include "call.h"
#include "frames.h"
#include "suites.h"

enum { BGRA = 0, FLOAT_ARGB = 4 };

static Picture a;
static Picture b;
static Picture c;

// One 8-bit BGRA row of two pixels, or a float ARGB row of one.
static void twoPixels(Picture* picture) {
    makePicture(picture, 2, 1, BGRA, 4, 8);
    putPixel(picture, 0, 0, 10, 20, 30, 40);
    putPixel(picture, 1, 0, 50, 60, 70, 80);
}

static void oneFloat(Picture* picture, float s0, float s1, float s2, float s3) {
    makePicture(picture, 1, 1, FLOAT_ARGB, 16, 4);
    putSamples(picture, 0, 0, s0, s1, s2, s3);
}

static void checkCopiesAndChannels(Word processor) {
    about("CopyImage");
    twoPixels(&a);
    makePicture(&b, 2, 1, BGRA, 4, 0);
    CHECK(ASK(PROCESSOR_COPY_IMAGE, processor, WORD(a.record), WORD(b.record)));
    CHECK(isPixel(&b, 0, 0, 10, 20, 30, 40) && isPixel(&b, 1, 0, 50, 60, 70, 80) && guardsIntact(&b));

    about("SwapChannelOrder");
    CHECK(ASK(PROCESSOR_SWAP_CHANNEL_ORDER, processor, WORD(a.record), WORD(b.record)));
    CHECK(isPixel(&b, 0, 0, 40, 30, 20, 10) && isPixel(&b, 1, 0, 80, 70, 60, 50));

    about("SetChannel");
    CHECK(ASK(PROCESSOR_SET_CHANNEL, processor, WORD(a.record), 2, 200));
    CHECK(isPixel(&a, 0, 0, 10, 20, 200, 40) && isPixel(&a, 1, 0, 50, 60, 200, 80));

    about("SwapChannels");
    twoPixels(&a);
    const uint32_t order[4] = {2, 0, 1, 3};
    CHECK(ASK(PROCESSOR_SWAP_CHANNELS, processor, WORD(a.record), WORD(order)));
    CHECK(isPixel(&a, 0, 0, 30, 10, 20, 40));

    about("CopyChannel");
    twoPixels(&a);
    twoPixels(&b);
    CHECK(ASK(PROCESSOR_COPY_CHANNEL, processor, WORD(a.record), WORD(b.record), 0, 3));
    CHECK(isPixel(&b, 0, 0, 10, 20, 30, 10) && isPixel(&b, 1, 0, 50, 60, 70, 50));

    about("InvertChannel");
    twoPixels(&a);
    CHECK(ASK(PROCESSOR_INVERT_CHANNEL, processor, WORD(a.record), 1));
    CHECK(isPixel(&a, 0, 0, 10, 235, 30, 40) && guardsIntact(&a));
}

static void checkAlpha(Word processor) {
    about("AlphaOver");
    makePicture(&a, 1, 1, BGRA, 4, 0);
    makePicture(&b, 1, 1, BGRA, 4, 0);
    makePicture(&c, 1, 1, BGRA, 4, 0);
    putPixel(&b, 0, 0, 10, 20, 30, 0);
    putPixel(&c, 0, 0, 100, 100, 100, 255);
    CHECK(ASK(PROCESSOR_ALPHA_OVER, processor, WORD(a.record), WORD(b.record), WORD(c.record), 1));
    CHECK(isPixel(&a, 0, 0, 110, 120, 130, 255));
    // Only the lowest byte of a boolean is the caller's.
    CHECK(ASK(PROCESSOR_ALPHA_OVER, processor, WORD(a.record), WORD(b.record), WORD(c.record), 0x12345600));
    CHECK(isPixel(&a, 0, 0, 100, 100, 100, 255));

    about("PremultiplyAlpha");
    makePicture(&a, 2, 1, BGRA, 4, 0);
    putPixel(&a, 0, 0, 200, 100, 50, 0);
    putPixel(&a, 1, 0, 200, 100, 50, 255);
    CHECK(ASK(PROCESSOR_PREMULTIPLY_ALPHA, processor, WORD(a.record)));
    CHECK(isPixel(&a, 0, 0, 0, 0, 0, 0) && isPixel(&a, 1, 0, 200, 100, 50, 255));
}

static void checkVideo(Word processor) {
    about("Yuv422ToBgra");
    makePicture(&a, 2, 1, BGRA, 2, 0);
    memcpy(pixelOf(&a, 0, 0), (uint8_t[]){235, 128, 16, 128}, 4);
    twoPixels(&b);
    CHECK(ASK(PROCESSOR_YUV422_TO_BGRA, processor, WORD(a.record), WORD(b.record), 0xABCDEF00 | 77));
    CHECK(isPixel(&b, 0, 0, 255, 255, 255, 77) && isPixel(&b, 1, 0, 0, 0, 0, 77));

    about("BgraToYuv422");
    memset(pixelOf(&a, 0, 0), 0, 4);
    CHECK(ASK(PROCESSOR_BGRA_TO_YUV422, processor, WORD(b.record), WORD(a.record)));
    CHECK(isPixel(&a, 0, 0, 235, 128, 16, 128) && guardsIntact(&a) && guardsIntact(&b));

    about("ColorToYuv");
    oneFloat(&a, 1, 1, 1, 1);
    oneFloat(&b, 0.5F, 0, 0, 0);
    CHECK(ASK(PROCESSOR_COLOR_TO_YUV, processor, WORD(a.record), WORD(b.record)));
    const float alpha = samplesOf(&b, 0, 0)[0];
    CHECK(areSamples(&b, 0, 0, alpha, 0.8588F, 0.5020F, 0.5020F, 0.001F));

    about("YuvToColor");
    oneFloat(&a, 0.5F, 0, 0, 0);
    CHECK(ASK(PROCESSOR_YUV_TO_COLOR, processor, WORD(b.record), WORD(a.record)));
    CHECK(areSamples(&a, 0, 0, samplesOf(&a, 0, 0)[0], 1, 1, 1, 0.002F));
}

static void checkGeometry(Word processor) {
    about("ResizeImage");
    makePicture(&a, 2, 1, BGRA, 4, 0);
    putPixel(&a, 1, 0, 200, 200, 200, 200);
    makePicture(&b, 8, 1, BGRA, 4, 4);
    CHECK(ASK(PROCESSOR_RESIZE_IMAGE, processor, WORD(a.record), WORD(b.record), 0));
    for (int32_t x = 0; x < 8; ++x) {
        CHECK(isPixel(&b, x, 0, 0, 0, 0, 0) || isPixel(&b, x, 0, 200, 200, 200, 200));
    }
    CHECK(isPixel(&b, 0, 0, 0, 0, 0, 0) && isPixel(&b, 7, 0, 200, 200, 200, 200));
    CHECK(ASK(PROCESSOR_RESIZE_IMAGE, processor, WORD(a.record), WORD(b.record), 1));
    CHECK(*pixelOf(&b, 3, 0) > 20 && *pixelOf(&b, 3, 0) < 180 && guardsIntact(&b));

    about("FlipVertical");
    makePicture(&a, 1, 3, BGRA, 4, 4);
    for (uint8_t row = 0; row < 3; ++row) {
        putPixel(&a, 0, row, row, row, row, row);
    }
    CHECK(ASK(PROCESSOR_FLIP_VERTICAL, processor, WORD(a.record)));
    CHECK(isPixel(&a, 0, 0, 2, 2, 2, 2) && isPixel(&a, 0, 1, 1, 1, 1, 1) && isPixel(&a, 0, 2, 0, 0, 0, 0));

    about("FlipVerticalCopy");
    makePicture(&b, 1, 2, BGRA, 4, 4);
    CHECK(ASK(PROCESSOR_FLIP_VERTICAL_COPY, processor, WORD(a.record), WORD(b.record)));
    CHECK(isPixel(&b, 0, 0, 1, 1, 1, 1) && isPixel(&b, 0, 1, 2, 2, 2, 2) && guardsIntact(&a) && guardsIntact(&b));

    about("ResizeRegion");  // the slot behind the destructor
    makePicture(&a, 4, 2, BGRA, 4, 0);
    putPixel(&a, 2, 1, 7, 8, 9, 10);
    makePicture(&b, 3, 3, BGRA, 4, 0);
    const uint32_t region[4] = {2, 1, 2, 1};  // left, top, right, bottom: one pixel
    CHECK(ASK(PROCESSOR_RESIZE_REGION, processor, WORD(a.record), WORD(region), WORD(b.record), 1));
    CHECK(isPixel(&b, 0, 0, 7, 8, 9, 10) && isPixel(&b, 2, 2, 7, 8, 9, 10));
}

static void checkFloats(Word processor) {
    about("SquareSamples");
    oneFloat(&a, 0.5F, 0.25F, 1, 2);
    CHECK(ASK(PROCESSOR_SQUARE_SAMPLES, processor, WORD(a.record)));
    CHECK(areSamples(&a, 0, 0, 0.25F, 0.0625F, 1, 4, 0));

    about("SquareRootSamples");
    CHECK(ASK(PROCESSOR_SQUARE_ROOT_SAMPLES, processor, WORD(a.record)));
    CHECK(areSamples(&a, 0, 0, 0.5F, 0.25F, 1, 2, 0));

    about("LimitSamples");
    oneFloat(&a, 1, 1, 1, 0);
    CHECK(ASK(PROCESSOR_LIMIT_SAMPLES, processor, WORD(a.record), floatBits(0.1F), floatBits(0.2F), floatBits(0.3F),
              floatBits(0.4F)));
    CHECK(areSamples(&a, 0, 0, 0.1F, 0.2F, 0.3F, 0, 0) && guardsIntact(&a));
}

// Arguments of each slot behind the object.
static const uint8_t ARGUMENT_COUNT[] = {
    [PROCESSOR_COPY_IMAGE] = 2,         [PROCESSOR_RESIZE_IMAGE] = 3,        [PROCESSOR_SWAP_CHANNEL_ORDER] = 2,
    [PROCESSOR_YUV422_TO_BGRA] = 3,     [PROCESSOR_BGRA_TO_YUV422] = 2,      [PROCESSOR_SET_CHANNEL] = 3,
    [PROCESSOR_ALPHA_OVER] = 4,         [PROCESSOR_SWAP_CHANNELS] = 2,       [PROCESSOR_PREMULTIPLY_ALPHA] = 1,
    [PROCESSOR_YUV_TO_COLOR] = 2,       [PROCESSOR_COLOR_TO_YUV] = 2,        [PROCESSOR_FLIP_VERTICAL] = 1,
    [PROCESSOR_FLIP_VERTICAL_COPY] = 2, [PROCESSOR_COPY_CHANNEL] = 4,        [PROCESSOR_INVERT_CHANNEL] = 2,
    [PROCESSOR_SQUARE_SAMPLES] = 1,     [PROCESSOR_SQUARE_ROOT_SAMPLES] = 1, [PROCESSOR_LIMIT_SAMPLES] = 5,
    [PROCESSOR_RESIZE_REGION] = 4,
};
enum { SLOT_COUNT = sizeof ARGUMENT_COUNT };

static void checkNulls(Word processor) {
    const Word words[6] = {processor};
    for (uint32_t slot = 0; slot < SLOT_COUNT; ++slot) {
        if (ARGUMENT_COUNT[slot] != 0) {
            about("Frame processor slot %u with nulls", slot);
            CHECK(!callBoolean(slot, words, 1u + ARGUMENT_COUNT[slot]));
        }
    }
}

// Every slot on pictures of whole vectors and a rest, where the stack's alignment matters to vector code. Each must
// take one of the two formats.
static void checkLargePictures(Word processor) {
    enum { WIDTH = 97, HEIGHT = 61 };
    const uint32_t order[4] = {3, 2, 1, 0};
    const uint32_t region[4] = {1, 2, 70, 50};
    const Word frames[3] = {WORD(a.record), WORD(b.record), WORD(c.record)};
    for (uint32_t slot = 0; slot < SLOT_COUNT; ++slot) {
        if (ARGUMENT_COUNT[slot] == 0) {
            continue;
        }
        about("Frame processor slot %u, large pictures", slot);
        Word words[6] = {processor, frames[0], frames[1], frames[2], 1, floatBits(0.5F)};
        if (slot == PROCESSOR_SWAP_CHANNELS) {
            words[2] = WORD(order);
        } else if (slot == PROCESSOR_RESIZE_REGION) {
            words[2] = WORD(region);
        } else if (slot == PROCESSOR_SET_CHANNEL || slot == PROCESSOR_INVERT_CHANNEL) {
            words[2] = words[3] = 1;
        } else if (slot == PROCESSOR_COPY_CHANNEL) {
            words[3] = 2;
        }
        int taken = 0;
        for (int isFloat = 0; isFloat < 2; ++isFloat) {
            makePicture(&a, WIDTH, HEIGHT, isFloat ? FLOAT_ARGB : BGRA, isFloat ? 16 : 4, 4);
            b = c = a;
            putAddress(b.record, FRAME_DATA, pixelOf(&b, 0, 0));
            putAddress(c.record, FRAME_DATA, pixelOf(&c, 0, 0));
            taken |= callBoolean(slot, words, 1u + ARGUMENT_COUNT[slot]);
            CHECK(guardsIntact(&a) && guardsIntact(&b) && guardsIntact(&c));
        }
        CHECK(taken);
    }
}

void checkFrameProcessor(Word processor) {
    checkUnknown(processor, ID_FRAME_PROCESSOR, FAILURE);
    checkNulls(processor);
    checkCopiesAndChannels(processor);
    checkAlpha(processor);
    checkVideo(processor);
    checkGeometry(processor);
    checkFloats(processor);
    checkLargePictures(processor);
}
