add_executable(system-conformance
    SystemApplicationConformance.cpp
    SystemLinuxServicesTests.cpp
    SystemLinuxWorld.cpp
    SystemLogTests.cpp
    SystemMainQueueConformance.cpp
    SystemProcess.cpp
    SystemSettingsFileTests.cpp
    SystemSimulatedWorld.cpp
    SystemUserDefaultsConformance.cpp
    SystemUserInterfaceConformance.cpp
    SystemWakeTests.cpp)
target_link_libraries(system-conformance PRIVATE
    tarvik_linux_system tarvik_simulated GTest::gtest_main)
target_precompile_headers(system-conformance PRIVATE
    <gtest/gtest.h> <functional> <memory> <string> <vector>)
add_test(NAME system-conformance COMMAND system-conformance)
set_tests_properties(system-conformance PROPERTIES
    TIMEOUT 300 ENVIRONMENT "QT_QPA_PLATFORM=offscreen")
