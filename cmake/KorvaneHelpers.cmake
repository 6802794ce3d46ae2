# The environment of the tools the build runs (render_icons, render_manual). They are not part
# of Korvane: under the race detector only our own code is checked, and Qt's SVG renderer runs
# threads the detector cannot follow.
set(KORVANE_BUILD_TOOL_ENV)
if(KORVANE_SANITIZE_THREAD)
    set(KORVANE_BUILD_TOOL_ENV TSAN_OPTIONS=ignore_noninstrumented_modules=1)
endif()

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
        # monitor ends. QProcess starts its children with a clone that shares
        # the parent's memory until exec, so the detector's mark "this is a child
        # of a threaded fork" lands in the test itself, which then dies at its
        # next new thread; the children only exec, so the mark is switched off.
        list(APPEND ARG_ENV "TSAN_OPTIONS=ignore_noninstrumented_modules=1:atexit_sleep_ms=0:die_after_fork=0")
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

# Prints the user manual docs/manual/Korvane.md to Korvane.pdf beside the executable of TARGET,
# where its Help action looks for it, whenever TARGET is built and the manual or a picture in
# it has changed. The printer needs a font database but no display.
function(korvane_print_manual target)
    get_target_property(dir ${target} RUNTIME_OUTPUT_DIRECTORY)
    if(NOT dir)
        set(dir ${CMAKE_CURRENT_BINARY_DIR})
    endif()
    set(source ${CMAKE_SOURCE_DIR}/docs/manual/Korvane.md)
    set(pdf ${dir}/Korvane.pdf)
    add_custom_command(OUTPUT ${pdf}
        COMMAND ${CMAKE_COMMAND} -E env QT_QPA_PLATFORM=offscreen ${KORVANE_BUILD_TOOL_ENV}
                $<TARGET_FILE:render_manual> ${source} ${pdf} "Korvane ${PROJECT_VERSION} user manual" ${pdf}.d
        DEPENDS render_manual ${source}
        DEPFILE ${pdf}.d
        COMMENT "Printing the user manual to ${pdf}"
        VERBATIM)
    add_custom_target(${target}_manual DEPENDS ${pdf})
    add_dependencies(${target} ${target}_manual)
    # Installed with the other documentation, where HelpManual looks when it is not beside the program.
    install(FILES ${pdf} DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/korvane)
endfunction()
