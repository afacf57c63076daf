// How Microsoft's compiler describes the classes that the exported functions throw: for each the functions that copy and
// destroy an object, and by which types it may be caught. Addresses are distances from the start of the module.

    // A type by its name there.
    .macro type label, name
    .section .data
    .p2align 3
type_\label:
    .quad 0, 0
    .asciz "\name"
    .endm

    // How an object is caught by a type: the properties (16 for std::bad_alloc), the place of the type's part in the
    // object, the object's size and its copy function.
    .macro catchable label, properties, size, copy
    .section .rdata
    .p2align 2
catchable_\label:
    .long \properties
    .rva type_\label
    .long 0, -1, 0, \size
    .rva \copy
    .endm

    .macro catchable_type label
    .rva catchable_\label
    .endm

    // A class with all types by which it is caught, itself first.
    .macro thrown label, destroy, count, types:vararg
    .section .rdata
    .p2align 2
types_\label:
    .long \count
    .irp base, \types
    catchable_type \base
    .endr
thrown_\label:
    .long 0
    \destroy
    .long 0
    .rva types_\label
    .endm

    .macro with_string label, name
    type \label, "\name"
    catchable \label, 0, 40, velmarCopyStringMessage
    thrown \label, ".rva velmarDestroyStringMessage", 1, \label
    .endm

    .macro with_std_string label, name
    type \label, "\name"
    catchable \label, 0, 32, velmarCopyStdStringMessage
    thrown \label, ".rva velmarDestroyStdStringMessage", 1, \label
    .endm

    .macro standard label, properties, name, count, bases:vararg
    type \label, "\name"
    catchable \label, \properties, 24, velmarCopyStandardException
    thrown \label, ".long 0", \count, \label, \bases
    .endm

    with_string velmar_exception, ".?AVVelmarException@Velmar@@"
    with_std_string exception, ".?AVException@Velmar@@"
    with_string scene_parser_excep, ".?AVSceneParserExcep@Velmar@@"
    with_std_string scene_loader_excep, ".?AVSceneLoaderExcep@Velmar@@"
    with_std_string file_utils_excep, ".?AVFileUtilsExcep@FileUtils@@"
    with_std_string platform_utils_excep, ".?AVPlatformUtilsExcep@PlatformUtils@@"
    with_std_string transform_path_excep, ".?AVTransformPathExcep@@"
    with_std_string name_map_excep, ".?AVNameMapExcep@@"

    type standard_exception, ".?AVexception@std@@"
    catchable standard_exception, 0, 24, velmarCopyStandardException
    thrown standard_exception, ".long 0", 1, standard_exception
    standard bad_alloc, 16, ".?AVbad_alloc@std@@", 2, standard_exception
    standard bad_array_new_length, 0, ".?AVbad_array_new_length@std@@", 3, bad_alloc, standard_exception
    standard bad_cast, 0, ".?AVbad_cast@std@@", 2, standard_exception
    standard logic_error, 0, ".?AVlogic_error@std@@", 2, standard_exception
    standard runtime_error, 0, ".?AVruntime_error@std@@", 2, standard_exception
    standard length_error, 0, ".?AVlength_error@std@@", 3, logic_error, standard_exception
    standard out_of_range, 0, ".?AVout_of_range@std@@", 3, logic_error, standard_exception

    // In the order of `Thrown`.
    .section .rdata
    .globl velmarThrowInfos
    .p2align 3
velmarThrowInfos:
    .irp label, velmar_exception, exception, scene_parser_excep, scene_loader_excep, file_utils_excep, \
                platform_utils_excep, transform_path_excep, name_map_excep, bad_alloc, bad_array_new_length, bad_cast, \
                length_error, out_of_range, logic_error, runtime_error, standard_exception
    .quad thrown_\label
    .endr
