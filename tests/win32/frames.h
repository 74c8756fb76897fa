#pragma once

// Frame records written byte by byte, over memory whose guard bytes tell of writes outside the picture.

#include <stdint.h>

#include "contract.h"

enum { PICTURE_BYTES = 1 << 20, GUARD_BYTES = 64, GUARD = 0xC3 };

typedef struct Picture {
    uint8_t record[FRAME_SIZE + 16];
    int32_t rowBytes;
    int32_t stride;
    int32_t height;
    uint8_t memory[PICTURE_BYTES + 2 * GUARD_BYTES];
} Picture;

// A picture of zeros, its rows `padding` bytes apart.
void makePicture(Picture* picture, int32_t width, int32_t height, uint32_t format, int32_t bytesPerPixel,
                 int32_t padding);
// The pixel's bytes, or samples.
uint8_t* pixelOf(Picture* picture, int32_t x, int32_t y);
float* samplesOf(Picture* picture, int32_t x, int32_t y);
void putPixel(Picture* picture, int32_t x, int32_t y, uint8_t s0, uint8_t s1, uint8_t s2, uint8_t s3);
void putSamples(Picture* picture, int32_t x, int32_t y, float s0, float s1, float s2, float s3);
int isPixel(Picture* picture, int32_t x, int32_t y, uint8_t s0, uint8_t s1, uint8_t s2, uint8_t s3);
int areSamples(Picture* picture, int32_t x, int32_t y, float s0, float s1, float s2, float s3, float tolerance);
// True while the record's tail and all bytes around and between the rows are as they were made.
int guardsIntact(const Picture* picture);
