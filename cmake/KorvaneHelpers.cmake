# A core library per folder: every .cpp/.h below DIR (optionally leaving out
# sub-folders that build as libraries of their own).
function(korvane_add_library name)
    cmake_parse_arguments(ARG "" "DIR" "EXCLUDE;LINK" ${ARGN})
    file(GLOB_RECURSE sources CONFIGURE_DEPENDS
         ${ARG_DIR}/*.cpp ${ARG_DIR}/*.h)
    foreach(ex IN LISTS ARG_EXCLUDE)
        list(FILTER sources EXCLUDE REGEX "^${ARG_DIR}/${ex}/")
    endforeach()
    add_library(${name} STATIC ${sources})
    target_include_directories(${name} PUBLIC ${CMAKE_SOURCE_DIR}/src)
    target_link_libraries(${name} PUBLIC ${ARG_LINK})
endfunction()

# One test executable per tst_*.cpp below DIR, linked with LINK. Each test runs
# headless and may find the shared test data and the source tree through the
# environment.
function(korvane_add_tests dir)
    cmake_parse_arguments(ARG "" "" "LINK;ENV" ${ARGN})
    if(KORVANE_SANITIZE_THREAD)
        # Qt itself is not instrumented and hands data between threads under
        # locks the race detector cannot see: check only our own accesses.
        list(APPEND ARG_ENV "TSAN_OPTIONS=ignore_noninstrumented_modules=1")
    endif()
    file(GLOB tests CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${dir}/tst_*.cpp)
    foreach(src IN LISTS tests)
        get_filename_component(name ${src} NAME_WE)
        add_executable(${name} ${src})
        target_link_libraries(${name} PRIVATE ${ARG_LINK} kv_testsupport Qt6::Test)
        add_test(NAME ${name} COMMAND ${name})
        set_tests_properties(${name} PROPERTIES
            TIMEOUT 300
            ENVIRONMENT "QT_QPA_PLATFORM=offscreen;KORVANE_SOURCE_DIR=${CMAKE_SOURCE_DIR};KORVANE_TESTDATA=${KORVANE_TESTDATA};KORVANE_BINARY_DIR=${CMAKE_BINARY_DIR};${ARG_ENV}")
    endforeach()
endfunction()
