# The other end of the real connections is a server in the test's own process, on loopback.
add_executable(websocket-conformance
    WebSocketBeastLifetimeTests.cpp
    WebSocketBeastOpeningTests.cpp
    WebSocketBeastRouteTests.cpp
    WebSocketBeastWireTests.cpp
    WebSocketBeastWorld.cpp
    WebSocketCertificates.cpp
    WebSocketConformance.cpp
    WebSocketListener.cpp
    WebSocketPeer.cpp
    WebSocketRecorder.cpp
    WebSocketSimulatedWorld.cpp)
target_link_libraries(websocket-conformance PRIVATE
    tarvik_linux_websocket tarvik_simulated GTest::gtest_main)
target_precompile_headers(websocket-conformance PRIVATE
    <gtest/gtest.h> ${TARVIK_BEAST_HEADERS})
add_test(NAME websocket-conformance COMMAND websocket-conformance)
set_tests_properties(websocket-conformance PROPERTIES TIMEOUT 300)
