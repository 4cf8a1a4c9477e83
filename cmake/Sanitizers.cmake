# SPDX-License-Identifier: MIT
# The sanitizers of TARVIK_SANITIZE, in every target. A finding ends the process.
if(TARVIK_SANITIZE)
    add_compile_options(-fsanitize=${TARVIK_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${TARVIK_SANITIZE})
    add_compile_definitions(TARVIK_SANITIZED)
endif()
