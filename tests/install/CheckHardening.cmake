# SPDX-License-Identifier: MIT
# Checks that each of PROGRAMS, divided by "|", has the protections of cmake/Hardening.cmake, as far as
# READELF sees them. IS_FORTIFIED says whether fortified functions are expected. HELPERS, divided
# likewise, are small: the compiler sees that none of their calls needs a fortified function.
#
# The linker marks a program for control-flow protection only where the start files of the system are
# marked too. LIBRARY is one of our own libraries, which has to be marked, or empty on a processor
# without that protection.
cmake_minimum_required(VERSION 3.25)
set(protections)
set(patterns)
macro(expect protection pattern)
    list(APPEND protections ${protection})
    list(APPEND patterns ${pattern})
endmacro()
expect("a position-independent program" "Type: +DYN")
expect("read-only relocations" "GNU_RELRO")
expect("a stack without code" "GNU_STACK[^\n]* RW +0x")
expect("symbols that are bound at the start" "FLAGS_1[^\n]* NOW")
expect("the stack protector" "__stack_chk_fail")
string(REPLACE "|" ";" PROGRAMS "${PROGRAMS}")
string(REPLACE "|" ";" HELPERS "${HELPERS}")
foreach(program IN LISTS PROGRAMS HELPERS)
    execute_process(
        COMMAND ${READELF} --wide --file-header --program-headers --dynamic --dyn-syms --notes ${program}
        OUTPUT_VARIABLE description COMMAND_ERROR_IS_FATAL ANY)
    foreach(protection pattern IN ZIP_LISTS protections patterns)
        if(NOT description MATCHES "${pattern}")
            message(SEND_ERROR "${program} lacks ${protection}")
        endif()
    endforeach()
    if(IS_FORTIFIED AND program IN_LIST PROGRAMS AND NOT description MATCHES "__[a-z]+_chk[@ ]")
        message(SEND_ERROR "${program} lacks fortified functions")
    endif()
endforeach()
if(LIBRARY)
    execute_process(
        COMMAND ${READELF} --wide --notes ${LIBRARY}
        OUTPUT_VARIABLE description COMMAND_ERROR_IS_FATAL ANY)
    if(NOT description MATCHES "x86 feature: IBT, SHSTK")
        message(SEND_ERROR "${LIBRARY} lacks control-flow protection")
    endif()
endif()
