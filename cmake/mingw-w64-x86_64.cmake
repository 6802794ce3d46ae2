# 64-bit Windows (Korvane64.exe), cross-compiled with g++-mingw-w64-x86-64-posix.
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(KORVANE_MINGW_TRIPLET x86_64-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/MingwToolchain.cmake)
