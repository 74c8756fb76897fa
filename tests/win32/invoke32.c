#include "call.h"

// uint32_t invokeCounting(function, words, count, offset, popped): copies `count` words to the stack, which then stands
// `offset` bytes past a multiple of 16, calls, and stores how many bytes the callee popped.
uint32_t invokeCounting(void (*function)(void), const uint32_t* words, uint32_t count, uint32_t offset,
                        uint32_t* popped);
__asm__(
    ".text\n"
    ".globl _invokeCounting\n"
    "_invokeCounting:\n"
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

// All arguments must be popped by the callee.
Word invoke(void (*function)(void), const Word* words, uint32_t count, uint32_t offset, const char** fault) {
    uint32_t popped = 0;
    const Word result = invokeCounting(function, words, count, offset, &popped);
    *fault = popped != 4 * count ? "does not pop its arguments from the stack" : NULL;
    return result;
}
