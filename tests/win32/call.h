#pragma once

// Calls into the module with nothing left to the compiler: the words on the stack, where the stack stands, and what
// the callee takes off again are all set and checked by hand.

#include <stdint.h>

#define WORD(value) ((uint32_t)(uintptr_t)(value))
#define WORD_COUNT(...) (sizeof((const uint32_t[]){__VA_ARGS__}) / sizeof(uint32_t))

// Counts a check, and prints it when it fails.
#define CHECK(condition) check((condition) != 0, __FILE__, __LINE__, #condition)
void check(int passed, const char* file, int line, const char* what);
// What the following checks are about; printed with those that fail.
void about(const char* format, ...) __attribute__((format(printf, 1, 2)));
int checksRun(void);
int checksFailed(void);

// How far the stack stands past a multiple of 16 bytes at the moment of every call: 0, 4, 8 or 12.
void setStackOffset(uint32_t offset);

// Calls a vtable slot; the first word is the object. All arguments must be popped by the callee.
#define METHOD(slot, ...) callMethod(slot, (const uint32_t[]){__VA_ARGS__}, WORD_COUNT(__VA_ARGS__))
uint32_t callMethod(uint32_t slot, const uint32_t* words, uint32_t count);
// The same for an operation that answers a boolean: one byte, 0 or 1.
#define ASK(slot, ...) callBoolean(slot, (const uint32_t[]){__VA_ARGS__}, WORD_COUNT(__VA_ARGS__))
int callBoolean(uint32_t slot, const uint32_t* words, uint32_t count);
// Calls an export without arguments, which must leave the stack as it was.
uint32_t callExport(void (*function)(void));

// Reads and writes numbers at byte offsets.
uint32_t wordAt(const void* record, uint32_t offset);
float floatAt(const void* record, uint32_t offset);
void putWord(void* record, uint32_t offset, uint32_t value);
void putDouble(void* record, uint32_t offset, double value);
uint32_t floatBits(float value);
