; Calls of the library's "VelmarInterface" object, for the Microsoft assembler. Only the first argument is replaced, by
; the library object. All others stay where they are, in registers of either kind and on the stack, and the library's
; operation returns straight to the caller. The numbers are those of `LibrarySlot`.

; rcx is a RendererImpl, whose library object is at offset 16. Operations have 8 bytes each in its table.
jump MACRO slot
    mov rcx, qword ptr [rcx + 16]
    mov rax, qword ptr [rcx]
    jmp qword ptr [rax + 8 * slot]
ENDM

forward MACRO operation, slot
operation PROC
    jump slot
operation ENDP
ENDM

.code

    forward velmarForwardUnknown2, 2
    forward velmarForwardUnknown5, 5
    forward velmarForwardUnknown6, 6
    forward velmarForwardUnknown8, 8
    forward velmarForwardUnknown10, 10
    forward velmarForwardStart, 11
    forward velmarForwardPause, 12
    forward velmarForwardResume, 13
    forward velmarForwardStop, 14

; rcx is a Renderer, whose RendererImpl is at offset 16.
velmarUpdateScene PROC
    mov rcx, qword ptr [rcx + 16]
    jump 15
velmarUpdateScene ENDP

END
