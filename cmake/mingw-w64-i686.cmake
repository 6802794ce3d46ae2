# 32-bit Windows (Korvane.exe), cross-compiled with g++-mingw-w64-i686-posix.
set(CMAKE_SYSTEM_PROCESSOR i686)
set(KORVANE_MINGW_TRIPLET i686-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/MingwToolchain.cmake)
