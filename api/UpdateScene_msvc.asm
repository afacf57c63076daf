; VelmarRenderer_UpdateScene for the Microsoft assembler: replaces the renderer, which is the first argument, by its
; library object and jumps to operation 15 of that object. What the further arguments are is between the host and the
; library: they stay where they are, in registers of either kind and on the stack.
;
; rcx: the Renderer, whose RendererImpl stands at offset 16; that one's library object stands at offset 16 too.

.code

VelmarRenderer_UpdateScene PROC
    mov rax, qword ptr [rcx + 16]
    mov rcx, qword ptr [rax + 16]
    mov rax, qword ptr [rcx]
    jmp qword ptr [rax + 8 * 15]
VelmarRenderer_UpdateScene ENDP

END
