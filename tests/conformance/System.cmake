find_package(PkgConfig REQUIRED)
pkg_check_modules(XCB REQUIRED IMPORTED_TARGET xcb)

add_executable(system-conformance
    SystemAlertTests.cpp
    SystemApplicationConformance.cpp
    SystemInstanceTests.cpp
    SystemLaunchTests.cpp
    SystemLinuxServicesTests.cpp
    SystemLinuxWorld.cpp
    SystemLogConformance.cpp
    SystemLogTests.cpp
    SystemLoginItemTests.cpp
    SystemLoginManager.cpp
    SystemMainQueueConformance.cpp
    SystemMenuTests.cpp
    SystemNotifierHost.cpp
    SystemPicturesTests.cpp
    SystemProcess.cpp
    SystemSampleWindow.cpp
    SystemSettingsFileTests.cpp
    SystemSimulatedWorld.cpp
    SystemTrayTests.cpp
    SystemUserDefaultsConformance.cpp
    SystemUserInterfaceConformance.cpp
    SystemViewsConformance.cpp
    SystemViewsTests.cpp
    SystemWakeTests.cpp
    SystemWindowTests.cpp
    SystemWorkspaceConformance.cpp
    SystemWorkspaceTests.cpp
    SystemX11StartupTests.cpp)
target_link_libraries(system-conformance PRIVATE
    tarvik_linux_system tarvik_simulated PkgConfig::XCB GTest::gtest_main)
target_precompile_headers(system-conformance REUSE_FROM tarvik_simulated)

add_test(NAME system-conformance
    COMMAND system-conformance --gtest_filter=-SystemAlertTest.*:SystemX11*Test.*:System*TrayTest.*)
set_tests_properties(system-conformance PROPERTIES
    TIMEOUT 300 ENVIRONMENT "QT_QPA_PLATFORM=offscreen")

# Each on a desktop and in a process of its own: Qt chooses its kind of tray once a process.
foreach(suite IN ITEMS SystemAlertTest SystemX11MenuTest SystemX11StartupTest SystemX11WindowTest SystemX11TrayTest SystemNotifierTrayTest)
    add_test(NAME system-conformance-${suite}
        COMMAND ${CMAKE_SOURCE_DIR}/tests/desktop/private-desktop --x11 --wm --
                $<TARGET_FILE:system-conformance> --gtest_filter=${suite}.*)
    set_tests_properties(system-conformance-${suite} PROPERTIES
        TIMEOUT 120 ENVIRONMENT "QT_QPA_PLATFORM=xcb")
endforeach()

add_test(NAME desktop-entry COMMAND desktop-file-validate
    ${CMAKE_SOURCE_DIR}/packaging/linux/com.tarvik.dictate.desktop)
