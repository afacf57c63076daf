// The operations of a RendererImpl that hand their arguments on to its library object.
// Only the first argument, which names the object, is replaced; all others stay where they are, in registers of either
// kind and on the stack, and the library's operation returns straight to the caller.
//
// rdi: the RendererImpl, whose library object stands at offset 16; operations have 8 bytes each in the object's table.
// rax must keep its value: variadic calls count their vector registers in it.

    .intel_syntax noprefix
    .text

    .macro forward slot
    .globl velmarForwardToSlot\slot
    .hidden velmarForwardToSlot\slot
    .type velmarForwardToSlot\slot, @function
    .p2align 4
velmarForwardToSlot\slot\():
    .cfi_startproc
    mov rdi, [rdi + 16]
    mov r11, [rdi]
    jmp [r11 + 8 * \slot]
    .cfi_endproc
    .size velmarForwardToSlot\slot, . - velmarForwardToSlot\slot
    .endm

    forward 2
    forward 5
    forward 6
    forward 8
    forward 10
    forward 11
    forward 12
    forward 13
    forward 14

    .section .note.GNU-stack, "", @progbits
