# SPDX-License-Identifier: MIT
# What makes a fault in memory harder to use. The programs hold a user's key and read what comes from
# the network. Sanitizers find more and do not go together with it.
option(TARVIK_HARDEN "Compile and link with the protections of the compiler and the linker" ON)
if(NOT TARVIK_HARDEN OR TARVIK_SANITIZE OR NOT TARVIK_BACKEND STREQUAL "linux")
    return()
endif()
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
add_compile_options(-fstack-protector-strong -fstack-clash-protection)
if(CMAKE_SYSTEM_PROCESSOR STREQUAL "x86_64")
    add_compile_options(-fcf-protection=full)
elseif(CMAKE_SYSTEM_PROCESSOR STREQUAL "aarch64")
    add_compile_options(-mbranch-protection=standard)
endif()
# Fortified functions need the optimiser. Some distributions define another level by themselves.
add_compile_options("$<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")
add_compile_definitions(_GLIBCXX_ASSERTIONS)
add_link_options(LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack)
