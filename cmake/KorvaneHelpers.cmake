# A static library of Korvane's own, built from the sources listed (relative
# to the calling folder), with src/ on the include path.
function(korvane_add_library name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINK" ${ARGN})
    add_library(${name} STATIC ${ARG_SOURCES})
    target_include_directories(${name} PUBLIC ${CMAKE_SOURCE_DIR}/src)
    target_link_libraries(${name} PUBLIC ${ARG_LINK})
endfunction()

# One test executable per name listed: tests/DIR/NAME.cpp, linked with LINK.
# Each test runs headless and finds the source tree, the build tree and the
# shared test data through the environment.
function(korvane_add_tests dir)
    cmake_parse_arguments(ARG "" "" "TESTS;LINK;ENV;WRAP" ${ARGN})
    if(KORVANE_SANITIZE_THREAD)
        # Qt itself is not instrumented and hands data between threads under
        # locks the race detector cannot see: check only our own accesses. The
        # detector's own second of sleep at exit would hide how fast a stopped
        # monitor ends.
        list(APPEND ARG_ENV "TSAN_OPTIONS=ignore_noninstrumented_modules=1:atexit_sleep_ms=0")
    endif()
    foreach(name IN LISTS ARG_TESTS)
        add_executable(${name} ${CMAKE_CURRENT_SOURCE_DIR}/${dir}/${name}.cpp)
        target_link_libraries(${name} PRIVATE ${ARG_LINK} kv_testsupport Qt6::Test)
        add_test(NAME ${name} COMMAND ${ARG_WRAP} $<TARGET_FILE:${name}>)
        set_tests_properties(${name} PROPERTIES
            TIMEOUT 300
            ENVIRONMENT "QT_QPA_PLATFORM=offscreen;KORVANE_SOURCE_DIR=${CMAKE_SOURCE_DIR};KORVANE_TESTDATA=${KORVANE_TESTDATA};KORVANE_BINARY_DIR=${CMAKE_BINARY_DIR};${ARG_ENV}")
    endforeach()
endfunction()
