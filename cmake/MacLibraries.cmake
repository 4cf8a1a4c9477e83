# SPDX-License-Identifier: MIT
# The libraries of the core and its tests, built from the sources that packaging/macos/install-packages
# has unpacked. Homebrew's own builds serve one processor and no macOS older than the builder's.
# Nothing is fetched here.
include(FetchContent)

set(TARVIK_LIBRARIES ${PROJECT_SOURCE_DIR}/build/libraries CACHE PATH "Folder of the unpacked sources")
block()
    # The warnings of these sources are not ours.
    set(CMAKE_COMPILE_WARNING_AS_ERROR OFF)
    set(BUILD_SHARED_LIBS OFF)
    set(BUILD_GMOCK OFF CACHE BOOL "" FORCE)
    set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
    set(HWY_ENABLE_CONTRIB OFF CACHE BOOL "" FORCE)
    set(HWY_ENABLE_EXAMPLES OFF CACHE BOOL "" FORCE)
    set(HWY_ENABLE_INSTALL OFF CACHE BOOL "" FORCE)
    set(HWY_ENABLE_TESTS OFF CACHE BOOL "" FORCE)

    FetchContent_Declare(simdjson SOURCE_DIR ${TARVIK_LIBRARIES}/simdjson SYSTEM OVERRIDE_FIND_PACKAGE)
    FetchContent_Declare(hwy SOURCE_DIR ${TARVIK_LIBRARIES}/highway SYSTEM OVERRIDE_FIND_PACKAGE)
    FetchContent_MakeAvailable(simdjson hwy)
    if(TARVIK_TESTS)
        FetchContent_Declare(GTest SOURCE_DIR ${TARVIK_LIBRARIES}/googletest SYSTEM OVERRIDE_FIND_PACKAGE)
        FetchContent_MakeAvailable(GTest)
    endif()
    if(NOT TARGET hwy::hwy)
        add_library(hwy::hwy ALIAS hwy)
    endif()
endblock()
