# SPDX-License-Identifier: MIT
# Installs the build in the folder BUILD into the folder FOLDER. Each of FILES, divided by "|", has to
# be there, with contents.
file(REMOVE_RECURSE ${FOLDER})
execute_process(
    COMMAND ${CMAKE_COMMAND} --install ${BUILD} --config ${CONFIG} --prefix ${FOLDER}
    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
string(REPLACE "|" ";" FILES "${FILES}")
foreach(file IN LISTS FILES)
    if(NOT EXISTS ${FOLDER}/${file})
        message(SEND_ERROR "${file} is not installed")
        continue()
    endif()
    file(SIZE ${FOLDER}/${file} size)
    if(size EQUAL 0)
        message(SEND_ERROR "${file} is empty")
    endif()
endforeach()
