// VelmarKit_Renderer_UpdateScene: keeps the registers that may hold arguments and hands them, with the address of the
// arguments on the stack, to velmarKitUpdateScene; velmarKitCall calls a function with those arguments. How many there are
// is between the host and the library: 32 words of the stack are passed on.

    .intel_syntax noprefix
    .text
    .globl VelmarKit_Renderer_UpdateScene
    .def VelmarKit_Renderer_UpdateScene
    .scl 2
    .type 32
    .endef
    .p2align 4
    .seh_proc VelmarKit_Renderer_UpdateScene
VelmarKit_Renderer_UpdateScene:
    sub rsp, 136
    .seh_stackalloc 136
    .seh_endprologue
    mov [rsp + 32], rcx
    mov [rsp + 40], rdx
    mov [rsp + 48], r8
    mov [rsp + 56], r9
    movups [rsp + 64], xmm0
    movups [rsp + 80], xmm1
    movups [rsp + 96], xmm2
    movups [rsp + 112], xmm3
    lea rcx, [rsp + 32]
    // After the return address and the caller's room for four registers.
    lea rdx, [rsp + 136 + 40]
    call velmarKitUpdateScene
    add rsp, 136
    ret
    .seh_endproc

    .globl velmarKitCall
    .def velmarKitCall
    .scl 2
    .type 32
    .endef
    .p2align 4
    .seh_proc velmarKitCall
velmarKitCall:
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
    movups xmm0, [r10 + 32]
    movups xmm1, [r10 + 48]
    movups xmm2, [r10 + 64]
    movups xmm3, [r10 + 80]
    mov rcx, [r10]
    mov rdx, [r10 + 8]
    mov r8, [r10 + 16]
    mov r9, [r10 + 24]
    call r11
    add rsp, 296
    pop rdi
    pop rsi
    ret
    .seh_endproc
