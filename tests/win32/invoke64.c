#include <string.h>

#include "call.h"

// What a callee has to leave as it was: seven registers with a gap behind them, then xmm6 to xmm15.
typedef struct Kept {
    uint64_t numbers[8];
    uint64_t vectors[20];
} Kept;

// Word invokeKeeping(function, words, count, offset, kept): copies `count` words to the stack, which then stands
// `offset` bytes past a multiple of 64, and the first four into the registers of numbers and of vectors; fills those
// that the callee has to keep from `kept`, calls, and stores there what they hold then.
Word invokeKeeping(void (*function)(void), const Word* words, uint64_t count, uint64_t offset, Kept* kept);
__asm__(
    ".text\n"
    ".globl invokeKeeping\n"
    "invokeKeeping:\n"
    "    pushq %rbp\n"
    "    movq %rsp, %rbp\n"
    "    pushq %rbx\n"
    "    pushq %rsi\n"
    "    pushq %rdi\n"
    "    pushq %r12\n"
    "    pushq %r13\n"
    "    pushq %r14\n"
    "    pushq %r15\n"
    "    subq $168, %rsp\n"
    "    movups %xmm6, 0(%rsp)\n"
    "    movups %xmm7, 16(%rsp)\n"
    "    movups %xmm8, 32(%rsp)\n"
    "    movups %xmm9, 48(%rsp)\n"
    "    movups %xmm10, 64(%rsp)\n"
    "    movups %xmm11, 80(%rsp)\n"
    "    movups %xmm12, 96(%rsp)\n"
    "    movups %xmm13, 112(%rsp)\n"
    "    movups %xmm14, 128(%rsp)\n"
    "    movups %xmm15, 144(%rsp)\n"
    "    movq 48(%rbp), %r10\n"
    "    leaq 224(,%r8,8), %rax\n"
    "    subq %rax, %rsp\n"
    "    andq $-64, %rsp\n"
    "    addq %r9, %rsp\n"
    "    movq %rcx, %rax\n"
    "    movq %rdx, %rsi\n"
    "    movq %rsp, %rdi\n"
    "    movq %r8, %rcx\n"
    "    cld\n"
    "    rep movsq\n"
    "    movups 64(%r10), %xmm6\n"
    "    movups 80(%r10), %xmm7\n"
    "    movups 96(%r10), %xmm8\n"
    "    movups 112(%r10), %xmm9\n"
    "    movups 128(%r10), %xmm10\n"
    "    movups 144(%r10), %xmm11\n"
    "    movups 160(%r10), %xmm12\n"
    "    movups 176(%r10), %xmm13\n"
    "    movups 192(%r10), %xmm14\n"
    "    movups 208(%r10), %xmm15\n"
    "    movq 0(%r10), %rbx\n"
    "    movq 8(%r10), %rsi\n"
    "    movq 16(%r10), %rdi\n"
    "    movq 24(%r10), %r12\n"
    "    movq 32(%r10), %r13\n"
    "    movq 40(%r10), %r14\n"
    "    movq 48(%r10), %r15\n"
    "    movq 0(%rsp), %rcx\n"
    "    movq %rcx, %xmm0\n"
    "    movq 8(%rsp), %rdx\n"
    "    movq %rdx, %xmm1\n"
    "    movq 16(%rsp), %r8\n"
    "    movq %r8, %xmm2\n"
    "    movq 24(%rsp), %r9\n"
    "    movq %r9, %xmm3\n"
    "    call *%rax\n"
    "    movq 48(%rbp), %r10\n"
    "    movq %rbx, 0(%r10)\n"
    "    movq %rsi, 8(%r10)\n"
    "    movq %rdi, 16(%r10)\n"
    "    movq %r12, 24(%r10)\n"
    "    movq %r13, 32(%r10)\n"
    "    movq %r14, 40(%r10)\n"
    "    movq %r15, 48(%r10)\n"
    "    movups %xmm6, 64(%r10)\n"
    "    movups %xmm7, 80(%r10)\n"
    "    movups %xmm8, 96(%r10)\n"
    "    movups %xmm9, 112(%r10)\n"
    "    movups %xmm10, 128(%r10)\n"
    "    movups %xmm11, 144(%r10)\n"
    "    movups %xmm12, 160(%r10)\n"
    "    movups %xmm13, 176(%r10)\n"
    "    movups %xmm14, 192(%r10)\n"
    "    movups %xmm15, 208(%r10)\n"
    "    leaq -224(%rbp), %rsp\n"
    "    movups 0(%rsp), %xmm6\n"
    "    movups 16(%rsp), %xmm7\n"
    "    movups 32(%rsp), %xmm8\n"
    "    movups 48(%rsp), %xmm9\n"
    "    movups 64(%rsp), %xmm10\n"
    "    movups 80(%rsp), %xmm11\n"
    "    movups 96(%rsp), %xmm12\n"
    "    movups 112(%rsp), %xmm13\n"
    "    movups 128(%rsp), %xmm14\n"
    "    movups 144(%rsp), %xmm15\n"
    "    addq $168, %rsp\n"
    "    popq %r15\n"
    "    popq %r14\n"
    "    popq %r13\n"
    "    popq %r12\n"
    "    popq %rdi\n"
    "    popq %rsi\n"
    "    popq %rbx\n"
    "    popq %rbp\n"
    "    ret\n");

Word invoke(void (*function)(void), const Word* words, uint32_t count, uint32_t offset, const char** fault) {
    Kept before;
    for (uint64_t i = 0; i < sizeof before / sizeof(uint64_t); ++i) {
        ((uint64_t*)(void*)&before)[i] = 0x5EED000000000000u + i;
    }
    Kept after = before;
    const Word result = invokeKeeping(function, words, count, offset, &after);
    *fault = memcmp(&before, &after, sizeof before) != 0 ? "does not keep the registers that it has to" : NULL;
    return result;
}
