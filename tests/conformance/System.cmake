find_package(PkgConfig REQUIRED)
pkg_check_modules(XCB REQUIRED IMPORTED_TARGET xcb)

add_executable(system-conformance
    SystemApplicationConformance.cpp
    SystemDesktopTests.cpp
    SystemLinuxServicesTests.cpp
    SystemLinuxWorld.cpp
    SystemLogTests.cpp
    SystemMainQueueConformance.cpp
    SystemNotifierHost.cpp
    SystemProcess.cpp
    SystemSettingsFileTests.cpp
    SystemSimulatedWorld.cpp
    SystemUserDefaultsConformance.cpp
    SystemUserInterfaceConformance.cpp
    SystemWakeTests.cpp)
target_link_libraries(system-conformance PRIVATE
    tarvik_linux_system tarvik_simulated PkgConfig::XCB GTest::gtest_main)
target_precompile_headers(system-conformance REUSE_FROM tarvik_simulated)

add_test(NAME system-conformance
    COMMAND system-conformance --gtest_filter=-SystemAlertTest.*:System*TrayTest.*)
set_tests_properties(system-conformance PROPERTIES
    TIMEOUT 300 ENVIRONMENT "QT_QPA_PLATFORM=offscreen")

# Each on a desktop and in a process of its own: Qt chooses its kind of tray once a process.
foreach(suite IN ITEMS SystemAlertTest SystemX11TrayTest SystemNotifierTrayTest)
    add_test(NAME system-conformance-${suite}
        COMMAND ${CMAKE_SOURCE_DIR}/tests/desktop/private-desktop --x11 --wm --
                $<TARGET_FILE:system-conformance> --gtest_filter=${suite}.*)
    set_tests_properties(system-conformance-${suite} PROPERTIES
        TIMEOUT 120 ENVIRONMENT "QT_QPA_PLATFORM=xcb")
endforeach()
