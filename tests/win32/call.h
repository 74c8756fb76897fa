#pragma once

// Calls into the module with nothing left to the compiler: the words handed over, where the stack stands, and what the
// callee has to leave as it was are all set and checked by hand.

#include <stdint.h>

// What a register holds: numbers, addresses, and objects, which are known by the address that the module answered.
typedef uintptr_t Word;

#define WORD(value) ((Word)(uintptr_t)(value))
#define WORD_COUNT(...) (sizeof((const Word[]){__VA_ARGS__}) / sizeof(Word))

// Counts a check, and prints it when it fails.
#define CHECK(condition) check((condition) != 0, __FILE__, __LINE__, #condition)
void check(int passed, const char* file, int line, const char* what);
// What the following checks are about; printed with those that fail.
void about(const char* format, ...) __attribute__((format(printf, 1, 2)));
int checksRun(void);
int checksFailed(void);

// Bytes that callers of this width keep the stack a multiple of.
enum { STACK_STEP = sizeof(Word) == 4 ? 4 : 16 };
// How far the stack stands past a multiple of four such steps at the moment of every call.
void setStackOffset(uint32_t offset);

// Calls a vtable slot, for an address or, most often, for a number of 32 bits; the first word is the object.
#define ADDRESS(slot, ...) callMethod(slot, (const Word[]){__VA_ARGS__}, WORD_COUNT(__VA_ARGS__))
#define METHOD(slot, ...) callForNumber(slot, (const Word[]){__VA_ARGS__}, WORD_COUNT(__VA_ARGS__))
#define NAME(slot, ...) ((const char*)ADDRESS(slot, __VA_ARGS__))
Word callMethod(uint32_t slot, const Word* words, uint32_t count);
uint32_t callForNumber(uint32_t slot, const Word* words, uint32_t count);
// The same for an operation that answers a boolean: one byte, 0 or 1.
#define ASK(slot, ...) callBoolean(slot, (const Word[]){__VA_ARGS__}, WORD_COUNT(__VA_ARGS__))
int callBoolean(uint32_t slot, const Word* words, uint32_t count);
// Calls an export without arguments.
Word callExport(void (*function)(void));
// The call itself, one for each width: `words` go where the calling convention has arguments, with the stack `offset`
// bytes past a multiple of four steps. `fault` tells what the callee did not leave as it has to, or is null.
Word invoke(void (*function)(void), const Word* words, uint32_t count, uint32_t offset, const char** fault);

// Reads and writes numbers at byte offsets.
uint32_t wordAt(const void* record, uint32_t offset);
float floatAt(const void* record, uint32_t offset);
void putWord(void* record, uint32_t offset, uint32_t value);
void putAddress(void* record, uint32_t offset, const void* value);
void putDouble(void* record, uint32_t offset, double value);
uint32_t floatBits(float value);
