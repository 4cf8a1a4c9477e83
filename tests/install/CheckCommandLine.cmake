# SPDX-License-Identifier: MIT
# Runs PROGRAM without a desktop, a home or any other variable, as a packager's build does. --version
# and --help are answered, anything else is refused. FIRST is the first line of --version.
function(expect status pattern)
    execute_process(COMMAND env -i ${PROGRAM} ${ARGN}
        RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE error TIMEOUT 20)
    if(NOT result STREQUAL status)
        message(SEND_ERROR "${PROGRAM} ${ARGN} ended with ${result}, not ${status}")
    endif()
    # What is refused is told on standard error, and nothing else is.
    if(status EQUAL 0)
        set(told "${output}")
        set(silent "${error}")
    else()
        set(told "${error}")
        set(silent "${output}")
    endif()
    if(NOT told MATCHES "${pattern}" OR NOT silent STREQUAL "")
        message(SEND_ERROR "${PROGRAM} ${ARGN} says \"${output}\" and \"${error}\"")
    endif()
endfunction()

string(REPLACE "." "\\." first "${FIRST}")
expect(0 "^${first}\n$" --version)
expect(0 "^usage: " --help)
expect(2 "--unknown" --unknown)
expect(2 "file" file)
expect(2 "--unknown" --version --unknown)
