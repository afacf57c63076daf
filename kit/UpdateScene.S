// VelmarKit_Renderer_UpdateScene: keeps the registers that may hold arguments and hands them, with the address of the
// arguments on the stack, to velmarKitUpdateScene; velmarKitCall calls a function with those arguments. How many there are
// is between the host and the library: 32 words of the stack are passed on. For the GNU and LLVM assemblers.

#ifdef _WIN32
#define VECTORS 0, 1, 2, 3
#else
#define VECTORS 0, 1, 2, 3, 4, 5, 6, 7
    .hidden velmarKitUpdateScene
    .hidden velmarKitCall
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
    .p2align 4
    .seh_proc \name
\name\():
#else
    .type \name, @function
    .p2align 4
\name\():
    .cfi_startproc
    push rbp
    .cfi_def_cfa_offset 16
    .cfi_offset rbp, -16
    mov rbp, rsp
    .cfi_def_cfa_register rbp
#endif
    .endm

    .macro finish name
#ifdef _WIN32
    ret
    .seh_endproc
#else
    leave
    .cfi_def_cfa rsp, 8
    ret
    .cfi_endproc
    .size \name, . - \name
#endif
    .endm

    // The vector registers in memory at an offset of a register, and back.
    .macro keep_vectors base offset
    .irp number, VECTORS
    movups [\base + \offset + 16 * \number], xmm\number
    .endr
    .endm
    .macro load_vectors base offset
    .irp number, VECTORS
    movups xmm\number, [\base + \offset + 16 * \number]
    .endr
    .endm

    begin VelmarKit_Renderer_UpdateScene
#ifdef _WIN32
    sub rsp, 136
    .seh_stackalloc 136
    .seh_endprologue
    mov [rsp + 32], rcx
    mov [rsp + 40], rdx
    mov [rsp + 48], r8
    mov [rsp + 56], r9
    keep_vectors rsp 64
    lea rcx, [rsp + 32]
    // After the return address and the caller's area for four registers.
    lea rdx, [rsp + 136 + 40]
    call velmarKitUpdateScene
    add rsp, 136
#else
    sub rsp, 192
    mov [rsp], rdi
    mov [rsp + 8], rsi
    mov [rsp + 16], rdx
    mov [rsp + 24], rcx
    mov [rsp + 32], r8
    mov [rsp + 40], r9
    // Variadic calls count their vector registers in it.
    mov [rsp + 48], rax
    keep_vectors rsp 64
    mov rdi, rsp
    lea rsi, [rbp + 16]
    call velmarKitUpdateScene
#endif
    finish VelmarKit_Renderer_UpdateScene

    begin velmarKitCall
#ifdef _WIN32
    push rsi
    .seh_pushreg rsi
    push rdi
    .seh_pushreg rdi
    sub rsp, 296
    .seh_stackalloc 296
    .seh_endprologue
    mov r11, rcx
    mov r10, rdx
    mov rsi, r8
    lea rdi, [rsp + 32]
    mov ecx, 32
    rep movsq
    load_vectors r10 32
    mov rcx, [r10]
    mov rdx, [r10 + 8]
    mov r8, [r10 + 16]
    mov r9, [r10 + 24]
    call r11
    add rsp, 296
    pop rdi
    pop rsi
#else
    sub rsp, 256
    mov r11, rdi
    mov r10, rsi
    mov rsi, rdx
    mov rdi, rsp
    mov ecx, 32
    rep movsq
    load_vectors r10 64
    mov rdi, [r10]
    mov rsi, [r10 + 8]
    mov rdx, [r10 + 16]
    mov rcx, [r10 + 24]
    mov r8, [r10 + 32]
    mov r9, [r10 + 40]
    mov rax, [r10 + 48]
    call r11
#endif
    finish velmarKitCall

#ifndef _WIN32
    .section .note.GNU-stack, "", @progbits
#endif
