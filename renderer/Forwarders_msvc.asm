; The operations of a RendererImpl that hand their arguments on to its library object, for the Microsoft assembler.
; Only the first argument, which names the object, is replaced; all others stay where they are, in registers of either
; kind and on the stack, and the library's operation returns straight to the caller.
;
; rcx: the RendererImpl, whose library object stands at offset 16; operations have 8 bytes each in the object's table.

forward MACRO slot
velmarForwardToSlot&slot PROC
    mov rcx, qword ptr [rcx + 16]
    mov rax, qword ptr [rcx]
    jmp qword ptr [rax + 8 * slot]
velmarForwardToSlot&slot ENDP
ENDM

.code

    forward 2
    forward 5
    forward 6
    forward 8
    forward 10
    forward 11
    forward 12
    forward 13
    forward 14

END
