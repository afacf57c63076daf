// Calls of the library's "VelmarInterface" object, for the GNU and LLVM assemblers. Only the first argument is replaced,
// by the library object. All others stay where they are, in registers of either kind and on the stack, and the library's
// operation returns straight to the caller. The numbers are those of `LibrarySlot`.

#ifdef _WIN32
#define ARGUMENT rcx
#define SCRATCH rax
#else
#define ARGUMENT rdi
// Not rax: variadic calls count their vector registers in it.
#define SCRATCH r11
#endif

    .intel_syntax noprefix
    .text

    .macro begin name
    .globl \name
#ifdef _WIN32
    .def \name
    .scl 2
    .type 32
    .endef
#else
    .type \name, @function
#endif
    .p2align 4
\name\():
#ifndef _WIN32
    .cfi_startproc
#endif
    .endm

    // The argument is a RendererImpl, whose library object is at offset 16. Operations have 8 bytes each in its table.
    .macro jump name slot
    mov ARGUMENT, [ARGUMENT + 16]
    mov SCRATCH, [ARGUMENT]
    jmp [SCRATCH + 8 * \slot]
#ifndef _WIN32
    .cfi_endproc
    .size \name, . - \name
#endif
    .endm

    .macro forward name slot
    begin \name
    jump \name \slot
    .endm

    forward velmarForwardUnknown2 2
    forward velmarForwardUnknown5 5
    forward velmarForwardUnknown6 6
    forward velmarForwardUnknown8 8
    forward velmarForwardUnknown10 10
    forward velmarForwardStart 11
    forward velmarForwardPause 12
    forward velmarForwardResume 13
    forward velmarForwardStop 14

    // The argument is a Renderer, whose RendererImpl is at offset 16.
    begin velmarUpdateScene
    mov ARGUMENT, [ARGUMENT + 16]
    jump velmarUpdateScene 15

#ifndef _WIN32
    .section .note.GNU-stack, "", @progbits
#endif
