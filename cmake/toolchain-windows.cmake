# Cross-builds for Windows x64 with MinGW-w64 GCC. The compilers of the posix thread model are named in full: the other
# model lacks std::mutex and std::thread.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR AMD64)

set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
find_program(CMAKE_OBJDUMP x86_64-w64-mingw32-objdump)

# Libraries and headers come from the cross compiler and from deps/windows alone, never from the building system.
get_filename_component(VELMAR_DEPS "${CMAKE_CURRENT_LIST_DIR}/../deps/windows" ABSOLUTE)
list(APPEND CMAKE_FIND_ROOT_PATH "${VELMAR_DEPS}" /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
