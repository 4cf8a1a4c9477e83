# What needs neither a screen nor a permission of the user's.
add_executable(macos-conformance
    SystemLoopMacWorld.mm
    SystemMainQueueConformance.cpp
    SystemSimulatedWorld.cpp)
set_source_files_properties(SystemLoopMacWorld.mm PROPERTIES COMPILE_OPTIONS -fobjc-arc)
target_link_libraries(macos-conformance PRIVATE
    tarvik_macos tarvik_simulated GTest::gtest_main "-framework Foundation")
add_test(NAME macos-conformance COMMAND macos-conformance)
set_tests_properties(macos-conformance PROPERTIES TIMEOUT 300)
