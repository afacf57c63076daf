// VelmarRenderer_UpdateScene for the GNU and LLVM assemblers: replaces the renderer, which is the first argument, by its
// library object and jumps to operation 15 of that object. What the further arguments are is between the host and the
// library: they stay where they are, in registers of either kind and on the stack.
//
// rcx: the Renderer, whose RendererImpl stands at offset 16; that one's library object stands at offset 16 too.

    .intel_syntax noprefix
    .text
    .globl VelmarRenderer_UpdateScene
    .def VelmarRenderer_UpdateScene
    .scl 2
    .type 32
    .endef
    .p2align 4
VelmarRenderer_UpdateScene:
    mov rax, [rcx + 16]
    mov rcx, [rax + 16]
    mov rax, [rcx]
    jmp [rax + 8 * 15]
