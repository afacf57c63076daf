// int velmarCallGuarded(void (*function)(void*), void* argument, void* caught): calls function(argument) and returns 0.
// If an exception arrives for which velmarFilterException asks so, everything above is unwound and the result is 1.

    .intel_syntax noprefix
    .text
    .globl velmarCallGuarded
    .def velmarCallGuarded
    .scl 2
    .type 32
    .endef
    .p2align 4
    .seh_proc velmarCallGuarded
velmarCallGuarded:
    sub rsp, 56
    .seh_stackalloc 56
    .seh_endprologue
    // The filter finds it by the frame's address.
    mov [rsp + 40], r8
    mov rax, rcx
    mov rcx, rdx
velmarGuardBegin:
    call rax
    // A call's address is that of what follows it, which must lie within the range.
    nop
velmarGuardEnd:
    xor eax, eax
    add rsp, 56
    ret
velmarGuardCaught:
    mov eax, 1
    add rsp, 56
    ret
    .seh_handler __C_specific_handler, @except, @unwind
    .seh_handlerdata
    .long 1
    .rva velmarGuardBegin, velmarGuardEnd, velmarFilterException, velmarGuardCaught
    .text
    .seh_endproc
