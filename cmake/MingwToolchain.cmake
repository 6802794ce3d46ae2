# Shared by the mingw-w64 toolchain files: set KORVANE_MINGW_TRIPLET, then include this.
# Debian's compilers with POSIX threads (g++-mingw-w64-*-posix), whose std::thread works.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_C_COMPILER ${KORVANE_MINGW_TRIPLET}-gcc-posix)
set(CMAKE_CXX_COMPILER ${KORVANE_MINGW_TRIPLET}-g++-posix)
set(CMAKE_RC_COMPILER ${KORVANE_MINGW_TRIPLET}-windres)

set(CMAKE_FIND_ROOT_PATH /usr/${KORVANE_MINGW_TRIPLET})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# ctest runs the tests through it; give another (a wine of your own) with -DCMAKE_CROSSCOMPILING_EMULATOR.
set(CMAKE_CROSSCOMPILING_EMULATOR wine CACHE STRING "What runs the Windows programs here")
