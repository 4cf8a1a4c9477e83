# SPDX-License-Identifier: MIT
# Repeated builds by ccache. A packager's own CMAKE_CXX_COMPILER_LAUNCHER has precedence.
if(NOT TARVIK_CCACHE OR CMAKE_CXX_COMPILER_LAUNCHER)
    return()
endif()
find_program(CCACHE ccache)
if(CCACHE)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros ${CCACHE})
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        # ccache reuses objects that were built with a precompiled header only with this option.
        add_compile_options(-fpch-preprocess)
    endif()
endif()
