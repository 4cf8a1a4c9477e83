# The suite starts and ends sound servers of its own, so it needs no private desktop around it.
add_executable(audio-conformance
    AudioConformance.cpp
    AudioMainQueue.cpp
    AudioPipeMicrophone.cpp
    AudioPulseTests.cpp
    AudioPulseWorld.cpp
    AudioRecorder.cpp
    AudioServerProcess.cpp
    AudioSimulatedWorld.cpp
    AudioSpeech.cpp)
target_link_libraries(audio-conformance PRIVATE tarvik_linux_audio tarvik_simulated GTest::gtest_main)
target_precompile_headers(audio-conformance REUSE_FROM tarvik_simulated)
add_test(NAME audio-conformance-simulated COMMAND audio-conformance --gtest_filter=Simulated/*)
add_test(NAME audio-conformance-pulseaudio COMMAND audio-conformance --gtest_filter=PulseAudio/*)
add_test(NAME audio-pulseaudio COMMAND audio-conformance --gtest_filter=AudioPulse.*)
set_tests_properties(audio-conformance-pulseaudio audio-pulseaudio PROPERTIES TIMEOUT 300)
