# SPDX-License-Identifier: MIT
# Warnings of every compiler. The presets make them errors, by CMAKE_COMPILE_WARNING_AS_ERROR.
add_compile_options(
    -Wall -Wextra -Wpedantic
    -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast -Wnon-virtual-dtor
    -Woverloaded-virtual -Wcast-align -Wnull-dereference -Wformat=2)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # GCC 12 sees null dereferences inside its own library's inlined code.
    add_compile_options(-Wno-null-dereference)
endif()
