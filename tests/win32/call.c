#include "call.h"

#include <stdarg.h>
#include <stdio.h>
#include <string.h>

// uint32_t invoke(function, words, count, offset, popped): copies `count` words to the stack, which then stands
// `offset` bytes past a multiple of 16, calls, and stores how many bytes the callee popped.
uint32_t invoke(void (*function)(void), const uint32_t* words, uint32_t count, uint32_t offset, uint32_t* popped);
__asm__(
    ".text\n"
    ".globl _invoke\n"
    "_invoke:\n"
    "    pushl %ebp\n"
    "    movl %esp, %ebp\n"
    "    pushl %ebx\n"
    "    pushl %esi\n"
    "    pushl %edi\n"
    "    movl 12(%ebp), %esi\n"
    "    movl 16(%ebp), %ecx\n"
    "    leal (,%ecx,4), %eax\n"
    "    subl %eax, %esp\n"
    "    subl $32, %esp\n"
    "    andl $-16, %esp\n"
    "    addl 20(%ebp), %esp\n"
    "    movl %esp, %edi\n"
    "    cld\n"
    "    rep movsl\n"
    "    movl %esp, %ebx\n"
    "    call *8(%ebp)\n"
    "    movl %esp, %ecx\n"
    "    subl %ebx, %ecx\n"
    "    movl 24(%ebp), %edx\n"
    "    movl %ecx, (%edx)\n"
    "    leal -12(%ebp), %esp\n"
    "    popl %edi\n"
    "    popl %esi\n"
    "    popl %ebx\n"
    "    popl %ebp\n"
    "    ret\n");

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

uint32_t callMethod(uint32_t slot, const uint32_t* words, uint32_t count) {
    void (**vtable)(void) = *(void (***)(void))(uintptr_t)words[0];
    uint32_t popped = 0;
    const uint32_t result = invoke(vtable[slot], words, count, stackOffset, &popped);
    ++run;
    if (popped != 4 * count) {
        ++failed;
        printf("%s: slot %u popped %u bytes of %u\n", subject, slot, popped, 4 * count);
    }
    return result;
}

int callBoolean(uint32_t slot, const uint32_t* words, uint32_t count) {
    const uint32_t result = callMethod(slot, words, count) & 0xFF;
    CHECK(result <= 1);
    return (int)result;
}

uint32_t callExport(void (*function)(void)) {
    uint32_t popped = 0;
    const uint32_t result = invoke(function, NULL, 0, stackOffset, &popped);
    CHECK(popped == 0);
    return result;
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

void putDouble(void* record, uint32_t offset, double value) {
    memcpy((uint8_t*)record + offset, &value, sizeof value);
}

uint32_t floatBits(float value) {
    uint32_t bits;
    memcpy(&bits, &value, sizeof bits);
    return bits;
}
