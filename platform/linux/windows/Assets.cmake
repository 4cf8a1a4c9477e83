# SPDX-License-Identifier: MIT
# The artwork as Qt resources. Each drawing is built in as it is, and drawn at the size that is shown.
set(TARVIK_ASSETS ${PROJECT_SOURCE_DIR}/assets)
set(TARVIK_DRAWING_FILES)
set(TARVIK_DRAWING_ENTRIES)

foreach(name IN ITEMS AppIcon GenericApplication TarvikWordmark mic mic.fill)
    set(file ${TARVIK_ASSETS}/${name}.svg)
    list(APPEND TARVIK_DRAWING_FILES ${file})
    string(APPEND TARVIK_DRAWING_ENTRIES "<file alias=\"${name}.svg\">${file}</file>\n")
endforeach()

file(CONFIGURE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/assets.qrc
    CONTENT "<RCC><qresource prefix=\"/\">\n@TARVIK_DRAWING_ENTRIES@</qresource></RCC>\n" @ONLY)
add_custom_command(OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/qrc_assets.cpp
    # The first version of the format has no times of files, so the bytes depend on the artwork alone.
    COMMAND Qt6::rcc --format-version 1 --name assets --output ${CMAKE_CURRENT_BINARY_DIR}/qrc_assets.cpp
            ${CMAKE_CURRENT_BINARY_DIR}/assets.qrc
    DEPENDS ${TARVIK_DRAWING_FILES} ${CMAKE_CURRENT_BINARY_DIR}/assets.qrc
    VERBATIM)
target_sources(tarvik_linux_windows PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/qrc_assets.cpp)
set_source_files_properties(${CMAKE_CURRENT_BINARY_DIR}/qrc_assets.cpp PROPERTIES
    SKIP_PRECOMPILE_HEADERS ON COMPILE_OPTIONS -w)
