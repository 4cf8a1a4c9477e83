# SPDX-License-Identifier: MIT
# The sanitizers of TARVIK_SANITIZE, in every target. A finding ends the process.
if(TARVIK_SANITIZE)
    add_compile_options(-fsanitize=${TARVIK_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${TARVIK_SANITIZE})
    if(TARVIK_SANITIZE MATCHES address)
        # It keeps freed memory for a while.
        add_compile_definitions(TARVIK_ADDRESS_SANITIZER)
    endif()
endif()
