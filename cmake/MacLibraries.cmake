# The libraries that the core and its tests use, from the sources that packaging/macos/install-packages
# has unpacked: what Homebrew has built runs on one processor, and on no older macOS than its own.
include(FetchContent)

set(BUILD_SHARED_LIBS OFF)
set(BUILD_GMOCK OFF CACHE BOOL "" FORCE)
set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
set(HWY_ENABLE_CONTRIB OFF CACHE BOOL "" FORCE)
set(HWY_ENABLE_EXAMPLES OFF CACHE BOOL "" FORCE)
set(HWY_ENABLE_INSTALL OFF CACHE BOOL "" FORCE)
set(HWY_ENABLE_TESTS OFF CACHE BOOL "" FORCE)

set(TARVIK_LIBRARIES ${CMAKE_SOURCE_DIR}/build/libraries)
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
