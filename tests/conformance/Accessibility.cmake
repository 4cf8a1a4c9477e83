find_package(PkgConfig REQUIRED)
pkg_check_modules(LIBSYSTEMD REQUIRED IMPORTED_TARGET libsystemd)

add_executable(accessibility-conformance
    AccessibilityAtspiTests.cpp
    AccessibilityAtspiWorld.cpp
    AccessibilityBusTests.cpp
    AccessibilityConformance.cpp
    AccessibilityPrivateSession.cpp
    AccessibilitySimulatedWorld.cpp
    AccessibilityTargetProcess.cpp)
target_link_libraries(accessibility-conformance PRIVATE
    tarvik_linux_accessibility tarvik_simulated PkgConfig::LIBSYSTEMD GTest::gtest_main)
target_compile_definitions(accessibility-conformance PRIVATE
    TARVIK_TARGETS_FOLDER="${CMAKE_SOURCE_DIR}/tests/desktop/targets")
target_precompile_headers(accessibility-conformance REUSE_FROM tarvik_simulated)
add_test(NAME accessibility-conformance COMMAND
    ${CMAKE_SOURCE_DIR}/tests/desktop/private-desktop --wm --a11y --
    $<TARGET_FILE:accessibility-conformance>)
set_tests_properties(accessibility-conformance PROPERTIES TIMEOUT 600)
