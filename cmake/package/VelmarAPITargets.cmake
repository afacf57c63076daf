# The library for Microsoft's compiler and clang-cl, as a target of the projects that use it.
get_filename_component(velmar_prefix "${CMAKE_CURRENT_LIST_DIR}/../../.." ABSOLUTE)
if(NOT TARGET VelmarAPI::VelmarAPI)
    add_library(VelmarAPI::VelmarAPI SHARED IMPORTED)
    set_target_properties(VelmarAPI::VelmarAPI PROPERTIES
        IMPORTED_LOCATION "${velmar_prefix}/bin/VelmarAPI.dll"
        IMPORTED_IMPLIB "${velmar_prefix}/lib/VelmarAPI.lib"
        INTERFACE_INCLUDE_DIRECTORIES "${velmar_prefix}/include")
    # The functions have C linkage and throw. With /EHsc, which CMake gives by default, the compiler takes it that such
    # functions don't, and leaves handlers and destructors out.
    set_property(TARGET VelmarAPI::VelmarAPI PROPERTY INTERFACE_COMPILE_OPTIONS
        "$<$<AND:$<COMPILE_LANGUAGE:CXX>,$<BOOL:${MSVC}>>:/EHs;/EHc->")
endif()
if(NOT TARGET VelmarAPI::velmarkit)
    add_library(VelmarAPI::velmarkit SHARED IMPORTED)
    set_target_properties(VelmarAPI::velmarkit PROPERTIES
        IMPORTED_LOCATION "${velmar_prefix}/bin/velmarkit.dll"
        IMPORTED_IMPLIB "${velmar_prefix}/lib/velmarkit.lib"
        INTERFACE_INCLUDE_DIRECTORIES "${velmar_prefix}/include")
endif()
unset(velmar_prefix)
