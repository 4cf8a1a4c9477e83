# SPDX-License-Identifier: MIT
# The artwork as Qt resources. Symbols are built in as they are. Pictures are rendered at the widths
# in pixels that are shown: the sizes of icons and, for a view in a window, its points at one and
# at two pixels a point.
find_program(RSVG_CONVERT rsvg-convert REQUIRED)

set(TARVIK_ASSETS ${PROJECT_SOURCE_DIR}/assets)
set(TARVIK_PICTURES ${CMAKE_CURRENT_BINARY_DIR}/pictures)
set_target_properties(tarvik_linux_windows PROPERTIES TARVIK_PICTURES ${TARVIK_PICTURES})
set(TARVIK_PICTURE_FILES)
set(TARVIK_PICTURE_ENTRIES)

foreach(picture IN ITEMS AppIcon:16,24,32,48,64,72,128,144,256 GenericApplication:72,144
                         TarvikWordmark:160,320)
    string(REGEX MATCH "^(.*):(.*)$" matched ${picture})
    set(name ${CMAKE_MATCH_1})
    string(REPLACE "," ";" widths ${CMAKE_MATCH_2})
    foreach(width IN LISTS widths)
        set(file ${TARVIK_PICTURES}/${name}/${width}.png)
        add_custom_command(OUTPUT ${file}
            COMMAND ${CMAKE_COMMAND} -E make_directory ${TARVIK_PICTURES}/${name}
            COMMAND ${RSVG_CONVERT} --width ${width} --keep-aspect-ratio
                    --output ${file} ${TARVIK_ASSETS}/${name}.svg
            DEPENDS ${TARVIK_ASSETS}/${name}.svg
            VERBATIM)
        list(APPEND TARVIK_PICTURE_FILES ${file})
        string(APPEND TARVIK_PICTURE_ENTRIES
            "<file alias=\"pictures/${name}/${width}.png\">${file}</file>\n")
    endforeach()
endforeach()
foreach(symbol IN ITEMS mic mic.fill)
    list(APPEND TARVIK_PICTURE_FILES ${TARVIK_ASSETS}/${symbol}.svg)
    string(APPEND TARVIK_PICTURE_ENTRIES
        "<file alias=\"symbols/${symbol}.svg\">${TARVIK_ASSETS}/${symbol}.svg</file>\n")
endforeach()

file(CONFIGURE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/assets.qrc
    CONTENT "<RCC><qresource prefix=\"/\">\n@TARVIK_PICTURE_ENTRIES@</qresource></RCC>\n" @ONLY)
add_custom_command(OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/qrc_assets.cpp
    # The first version of the format has no times of files, so the bytes depend on the artwork alone.
    COMMAND Qt6::rcc --format-version 1 --name assets --output ${CMAKE_CURRENT_BINARY_DIR}/qrc_assets.cpp
            ${CMAKE_CURRENT_BINARY_DIR}/assets.qrc
    DEPENDS ${TARVIK_PICTURE_FILES} ${CMAKE_CURRENT_BINARY_DIR}/assets.qrc
    VERBATIM)
target_sources(tarvik_linux_windows PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/qrc_assets.cpp)
set_source_files_properties(${CMAKE_CURRENT_BINARY_DIR}/qrc_assets.cpp PROPERTIES
    SKIP_PRECOMPILE_HEADERS ON COMPILE_OPTIONS -w)
