#include "frames.h"

#include <math.h>
#include <string.h>

#include "call.h"

void makePicture(Picture* picture, int32_t width, int32_t height, uint32_t format, int32_t bytesPerPixel,
                 int32_t padding) {
    memset(picture, GUARD, sizeof *picture);
    picture->rowBytes = width * bytesPerPixel;
    picture->stride = picture->rowBytes + padding;
    picture->height = height;
    CHECK(picture->stride * height <= PICTURE_BYTES);
    for (int32_t row = 0; row < height; ++row) {
        memset(pixelOf(picture, 0, row), 0, (size_t)picture->rowBytes);
    }
    memset(picture->record, 0, FRAME_SIZE);
    putAddress(picture->record, FRAME_DATA, picture->memory + GUARD_BYTES);
    putWord(picture->record, FRAME_WIDTH, (uint32_t)width);
    putWord(picture->record, FRAME_HEIGHT, (uint32_t)height);
    putWord(picture->record, FRAME_STRIDE, (uint32_t)picture->stride);
    putWord(picture->record, FRAME_BYTES_PER_PIXEL, (uint32_t)bytesPerPixel);
    putWord(picture->record, FRAME_FORMAT, format);
}

uint8_t* pixelOf(Picture* picture, int32_t x, int32_t y) {
    const int32_t bytesPerPixel = (int32_t)wordAt(picture->record, FRAME_BYTES_PER_PIXEL);
    return picture->memory + GUARD_BYTES + y * picture->stride + x * bytesPerPixel;
}

float* samplesOf(Picture* picture, int32_t x, int32_t y) {
    return (float*)(void*)pixelOf(picture, x, y);
}

void putPixel(Picture* picture, int32_t x, int32_t y, uint8_t s0, uint8_t s1, uint8_t s2, uint8_t s3) {
    memcpy(pixelOf(picture, x, y), (uint8_t[]){s0, s1, s2, s3}, 4);
}

void putSamples(Picture* picture, int32_t x, int32_t y, float s0, float s1, float s2, float s3) {
    memcpy(pixelOf(picture, x, y), (float[]){s0, s1, s2, s3}, 16);
}

int isPixel(Picture* picture, int32_t x, int32_t y, uint8_t s0, uint8_t s1, uint8_t s2, uint8_t s3) {
    return memcmp(pixelOf(picture, x, y), (uint8_t[]){s0, s1, s2, s3}, 4) == 0;
}

int areSamples(Picture* picture, int32_t x, int32_t y, float s0, float s1, float s2, float s3, float tolerance) {
    const float expected[4] = {s0, s1, s2, s3};
    const float* found = samplesOf(picture, x, y);
    for (int i = 0; i < 4; ++i) {
        if (!(fabsf(found[i] - expected[i]) <= tolerance)) {
            return 0;
        }
    }
    return 1;
}

int guardsIntact(const Picture* picture) {
    static Picture copy;
    copy = *picture;
    memset(copy.record, GUARD, FRAME_SIZE);
    for (int32_t row = 0; row < picture->height; ++row) {
        memset(copy.memory + GUARD_BYTES + row * picture->stride, GUARD, (size_t)picture->rowBytes);
    }
    for (size_t i = 0; i < sizeof copy.record; ++i) {
        if (copy.record[i] != GUARD) {
            return 0;
        }
    }
    for (size_t i = 0; i < sizeof copy.memory; ++i) {
        if (copy.memory[i] != GUARD) {
            return 0;
        }
    }
    return 1;
}
