// The operations of a RendererImpl that hand their arguments on to its library object, for the GNU and LLVM assemblers.
// Only the first argument, which names the object, is replaced; all others stay where they are, in registers of either
// kind and on the stack, and the library's operation returns straight to the caller.
//
// rcx: the RendererImpl, whose library object stands at offset 16; operations have 8 bytes each in the object's table.

    .intel_syntax noprefix
    .text

    .macro forward slot
    .globl velmarForwardToSlot\slot
    .def velmarForwardToSlot\slot
    .scl 2
    .type 32
    .endef
    .p2align 4
velmarForwardToSlot\slot\():
    mov rcx, [rcx + 16]
    mov rax, [rcx]
    jmp [rax + 8 * \slot]
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
