#include "call.h"

#include <stdarg.h>
#include <stdio.h>
#include <string.h>

static uint32_t stackOffset;
static int run;
static int failed;
static char subject[200];

void check(int passed, const char* file, int line, const char* what) {
    ++run;
    if (!passed) {
        ++failed;
        printf("%s:%d: %s: not true: %s\n", file, line, subject, what);
    }
}

void about(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(subject, sizeof subject, format, arguments);
    va_end(arguments);
}

int checksRun(void) {
    return run;
}

int checksFailed(void) {
    return failed;
}

void setStackOffset(uint32_t offset) {
    stackOffset = offset;
}

static Word checkedCall(void (*function)(void), const Word* words, uint32_t count) {
    const char* fault = NULL;
    const Word result = invoke(function, words, count, stackOffset, &fault);
    ++run;
    if (fault != NULL) {
        ++failed;
        printf("%s: a call %s\n", subject, fault);
    }
    return result;
}

Word callMethod(uint32_t slot, const Word* words, uint32_t count) {
    void (**vtable)(void) = *(void (***)(void))words[0];
    return checkedCall(vtable[slot], words, count);
}

uint32_t callForNumber(uint32_t slot, const Word* words, uint32_t count) {
    return (uint32_t)callMethod(slot, words, count);
}

int callBoolean(uint32_t slot, const Word* words, uint32_t count) {
    const Word result = callMethod(slot, words, count) & 0xFF;
    CHECK(result <= 1);
    return (int)result;
}

Word callExport(void (*function)(void)) {
    return checkedCall(function, NULL, 0);
}

uint32_t wordAt(const void* record, uint32_t offset) {
    uint32_t value;
    memcpy(&value, (const uint8_t*)record + offset, sizeof value);
    return value;
}

float floatAt(const void* record, uint32_t offset) {
    float value;
    memcpy(&value, (const uint8_t*)record + offset, sizeof value);
    return value;
}

void putWord(void* record, uint32_t offset, uint32_t value) {
    memcpy((uint8_t*)record + offset, &value, sizeof value);
}

void putAddress(void* record, uint32_t offset, const void* value) {
    memcpy((uint8_t*)record + offset, &value, sizeof value);
}

void putDouble(void* record, uint32_t offset, double value) {
    memcpy((uint8_t*)record + offset, &value, sizeof value);
}

uint32_t floatBits(float value) {
    uint32_t bits;
    memcpy(&bits, &value, sizeof bits);
    return bits;
}
