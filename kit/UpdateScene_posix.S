// VelmarKit_Renderer_UpdateScene: keeps the registers that may hold arguments and hands them, with the address of the
// arguments on the stack, to velmarKitUpdateScene; velmarKitCall calls a function with those arguments. How many there are
// is between the host and the library: 32 words of the stack are passed on.

    .intel_syntax noprefix
    .text
    .globl VelmarKit_Renderer_UpdateScene
    .type VelmarKit_Renderer_UpdateScene, @function
    .hidden velmarKitUpdateScene
    .p2align 4
VelmarKit_Renderer_UpdateScene:
    .cfi_startproc
    push rbp
    .cfi_def_cfa_offset 16
    .cfi_offset rbp, -16
    mov rbp, rsp
    .cfi_def_cfa_register rbp
    sub rsp, 192
    mov [rsp], rdi
    mov [rsp + 8], rsi
    mov [rsp + 16], rdx
    mov [rsp + 24], rcx
    mov [rsp + 32], r8
    mov [rsp + 40], r9
    // Variadic calls count their vector registers in it.
    mov [rsp + 48], rax
    movups [rsp + 64], xmm0
    movups [rsp + 80], xmm1
    movups [rsp + 96], xmm2
    movups [rsp + 112], xmm3
    movups [rsp + 128], xmm4
    movups [rsp + 144], xmm5
    movups [rsp + 160], xmm6
    movups [rsp + 176], xmm7
    mov rdi, rsp
    lea rsi, [rbp + 16]
    call velmarKitUpdateScene
    leave
    .cfi_def_cfa rsp, 8
    ret
    .cfi_endproc
    .size VelmarKit_Renderer_UpdateScene, . - VelmarKit_Renderer_UpdateScene

    .globl velmarKitCall
    .hidden velmarKitCall
    .type velmarKitCall, @function
    .p2align 4
velmarKitCall:
    .cfi_startproc
    push rbp
    .cfi_def_cfa_offset 16
    .cfi_offset rbp, -16
    mov rbp, rsp
    .cfi_def_cfa_register rbp
    sub rsp, 256
    mov r11, rdi
    mov r10, rsi
    mov rsi, rdx
    mov rdi, rsp
    mov ecx, 32
    rep movsq
    movups xmm0, [r10 + 64]
    movups xmm1, [r10 + 80]
    movups xmm2, [r10 + 96]
    movups xmm3, [r10 + 112]
    movups xmm4, [r10 + 128]
    movups xmm5, [r10 + 144]
    movups xmm6, [r10 + 160]
    movups xmm7, [r10 + 176]
    mov rdi, [r10]
    mov rsi, [r10 + 8]
    mov rdx, [r10 + 16]
    mov rcx, [r10 + 24]
    mov r8, [r10 + 32]
    mov r9, [r10 + 40]
    mov rax, [r10 + 48]
    call r11
    leave
    .cfi_def_cfa rsp, 8
    ret
    .cfi_endproc
    .size velmarKitCall, . - velmarKitCall

    .section .note.GNU-stack, "", @progbits
