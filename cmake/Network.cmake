# Asio, Beast and the TLS stream below them: compiled once, with one precompiled header, for
# everything that speaks over the network.
find_package(Boost 1.81 REQUIRED)
find_package(OpenSSL 3 REQUIRED)

set(TARVIK_NETWORK_HEADERS
    <boost/asio.hpp>
    <boost/asio/ssl.hpp>
    <boost/beast.hpp>
    <boost/beast/ssl.hpp>
    <functional>
    <memory>
    <string>
    <vector>)

add_library(tarvik_network STATIC network/Beast.cpp network/TlsStream.cpp)
# One thread runs a context and the others pass through its mutex, so Asio's memory fences add nothing;
# the thread sanitizer does not know them.
target_compile_definitions(tarvik_network PUBLIC
    BOOST_ASIO_SEPARATE_COMPILATION BOOST_BEAST_SEPARATE_COMPILATION BOOST_ASIO_DISABLE_FENCED_BLOCK)
# Nothing there is computed in a hurry, and every further step of optimisation doubles the time that
# the templates take to compile.
target_compile_options(tarvik_network PRIVATE $<$<CONFIG:RelWithDebInfo>:-O1>)
target_link_libraries(tarvik_network PUBLIC
    Boost::headers OpenSSL::SSL OpenSSL::Crypto Threads::Threads)
target_precompile_headers(tarvik_network PRIVATE ${TARVIK_NETWORK_HEADERS})

# Builds `target` with Asio and Beast.
function(tarvik_use_network target)
    target_link_libraries(${target} PUBLIC tarvik_network)
    target_compile_options(${target} PRIVATE $<$<CONFIG:RelWithDebInfo>:-O1>)
    target_precompile_headers(${target} REUSE_FROM tarvik_network)
endfunction()
