add_executable(x11-conformance
    X11DeliveryTests.cpp
    X11EventManagerConformance.cpp
    X11HotKeyRecorder.cpp
    X11HotKeyTests.cpp
    X11InputLoopTests.cpp
    X11InputSessionTests.cpp
    X11KeyboardEventsConformance.cpp
    X11KeyboardTests.cpp
    X11LatencyTests.cpp
    X11LentKeysTests.cpp
    X11MainQueue.cpp
    X11Process.cpp
    X11RealWorld.cpp
    X11Server.cpp
    X11ServerTests.cpp
    X11SimulatedWorld.cpp
    X11Target.cpp
    X11TypingTests.cpp
    X11User.cpp
    X11WindowManager.cpp)
target_link_libraries(x11-conformance PRIVATE
    tarvik_linux_x11 tarvik_simulated PkgConfig::XCB_INPUT GTest::gtest_main)
target_compile_definitions(x11-conformance PRIVATE
    TARVIK_TARGETS="${CMAKE_SOURCE_DIR}/tests/desktop/targets")
target_precompile_headers(x11-conformance REUSE_FROM tarvik_simulated)
add_test(NAME x11-conformance
    COMMAND ${CMAKE_SOURCE_DIR}/tests/desktop/private-desktop --x11 --wm --
        $<TARGET_FILE:x11-conformance>)
set_tests_properties(x11-conformance PROPERTIES TIMEOUT 300)
