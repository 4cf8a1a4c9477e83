# Boost.Asio and Beast: compiled once, with one precompiled header, for everything that speaks over
# the network.
find_package(Boost 1.81 REQUIRED)
find_package(OpenSSL 3 REQUIRED)

set(TARVIK_BEAST_HEADERS
    <boost/asio.hpp>
    <boost/asio/ssl.hpp>
    <boost/beast.hpp>
    <boost/beast/ssl.hpp>
    <functional>
    <memory>
    <string>
    <vector>)

add_library(tarvik_beast STATIC cmake/Beast.cpp)
# One thread runs a context and the others pass through its mutex, so Asio's memory fences add nothing;
# the thread sanitizer does not know them.
target_compile_definitions(tarvik_beast PUBLIC
    BOOST_ASIO_SEPARATE_COMPILATION BOOST_BEAST_SEPARATE_COMPILATION BOOST_ASIO_DISABLE_FENCED_BLOCK)
# Nothing there is computed in a hurry, and every further step of optimisation doubles the time that
# the templates take to compile.
target_compile_options(tarvik_beast PRIVATE $<$<CONFIG:RelWithDebInfo>:-O1>)
target_link_libraries(tarvik_beast PUBLIC
    Boost::headers OpenSSL::SSL OpenSSL::Crypto Threads::Threads)
target_precompile_headers(tarvik_beast PRIVATE ${TARVIK_BEAST_HEADERS})

# Builds `target` with Asio and Beast.
function(tarvik_use_beast target)
    target_link_libraries(${target} PUBLIC tarvik_beast)
    target_compile_options(${target} PRIVATE $<$<CONFIG:RelWithDebInfo>:-O1>)
    target_precompile_headers(${target} REUSE_FROM tarvik_beast)
endfunction()
