# SPDX-License-Identifier: MIT
# "Tarvik Dictate.app": the executable, the information dictionary and the artwork.
find_program(RSVG_CONVERT rsvg-convert REQUIRED)
find_program(ICONUTIL iconutil REQUIRED)

set(TARVIK_ASSETS ${PROJECT_SOURCE_DIR}/assets)
set(TARVIK_BUNDLE "${PROJECT_BINARY_DIR}/Tarvik Dictate.app")
set(TARVIK_CONTENTS "${TARVIK_BUNDLE}/Contents")
set(TARVIK_ICONSET ${PROJECT_BINARY_DIR}/AppIcon.iconset)
set(TARVIK_RESOURCES)

configure_file(${PROJECT_SOURCE_DIR}/packaging/macos/Info.plist.in ${TARVIK_CONTENTS}/Info.plist @ONLY)

# Renders a drawing of the assets. The width is in pixels.
function(tarvik_draw asset width file)
    get_filename_component(folder ${file} DIRECTORY)
    add_custom_command(OUTPUT ${file}
        COMMAND ${CMAKE_COMMAND} -E make_directory ${folder}
        COMMAND ${RSVG_CONVERT} --width ${width} --keep-aspect-ratio --output ${file}
                ${TARVIK_ASSETS}/${asset}.svg
        DEPENDS ${TARVIK_ASSETS}/${asset}.svg
        VERBATIM)
endfunction()

set(icons)
foreach(points IN ITEMS 16 32 128 256 512)
    math(EXPR pixels "2 * ${points}")
    set(icon ${TARVIK_ICONSET}/icon_${points}x${points})
    tarvik_draw(AppIcon ${points} ${icon}.png)
    tarvik_draw(AppIcon ${pixels} ${icon}@2x.png)
    list(APPEND icons ${icon}.png ${icon}@2x.png)
endforeach()
add_custom_command(OUTPUT ${TARVIK_CONTENTS}/Resources/AppIcon.icns
    COMMAND ${CMAKE_COMMAND} -E make_directory ${TARVIK_CONTENTS}/Resources
    COMMAND ${ICONUTIL} --convert icns --output ${TARVIK_CONTENTS}/Resources/AppIcon.icns
            ${TARVIK_ICONSET}
    DEPENDS ${icons}
    VERBATIM)
tarvik_draw(TarvikWordmark 160 ${TARVIK_CONTENTS}/Resources/TarvikWordmark.png)
tarvik_draw(TarvikWordmark 320 ${TARVIK_CONTENTS}/Resources/TarvikWordmark@2x.png)
foreach(resource IN ITEMS AppIcon.icns TarvikWordmark.png TarvikWordmark@2x.png)
    list(APPEND TARVIK_RESOURCES ${TARVIK_CONTENTS}/Resources/${resource})
endforeach()

# The signature refuses a bundle with extended attributes, as Finder and synchronised folders leave them.
# An ad-hoc signature gives the bundle an identity, to which the system ties the user's permissions.
add_custom_command(OUTPUT ${TARVIK_CONTENTS}/_CodeSignature/CodeResources
    COMMAND ${CMAKE_COMMAND} -E make_directory ${TARVIK_CONTENTS}/MacOS
    COMMAND ${CMAKE_COMMAND} -E copy $<TARGET_FILE:tarvik-dictate> ${TARVIK_CONTENTS}/MacOS/
    COMMAND xattr -cr ${TARVIK_BUNDLE}
    COMMAND codesign --force --sign - ${TARVIK_BUNDLE}
    DEPENDS tarvik-dictate ${TARVIK_CONTENTS}/Info.plist ${TARVIK_RESOURCES}
    VERBATIM)
add_custom_target(tarvik-dictate-bundle ALL DEPENDS ${TARVIK_CONTENTS}/_CodeSignature/CodeResources)
