// VelmarRenderer_UpdateScene: replaces the renderer, which is the first argument, by its library object and jumps to
// operation 15 of that object. What the further arguments are is between the host and the library: they stay where they
// are, in registers of either kind and on the stack.
//
// rdi: the Renderer, whose RendererImpl stands at offset 16; that one's library object stands at offset 16 too.
// rax must keep its value: variadic calls count their vector registers in it.

    .intel_syntax noprefix
    .text
    .globl VelmarRenderer_UpdateScene
    .type VelmarRenderer_UpdateScene, @function
    .p2align 4
VelmarRenderer_UpdateScene:
    .cfi_startproc
    mov r11, [rdi + 16]
    mov rdi, [r11 + 16]
    mov r11, [rdi]
    jmp [r11 + 8 * 15]
    .cfi_endproc
    .size VelmarRenderer_UpdateScene, . - VelmarRenderer_UpdateScene

    .section .note.GNU-stack, "", @progbits
