# Cross-compiles for 64-bit Windows with mingw-w64; what is built runs under wine.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(PELT_MINGW x86_64-w64-mingw32)

# The form of the compiler with the threads of C++.
set(CMAKE_C_COMPILER ${PELT_MINGW}-gcc-posix)
set(CMAKE_CXX_COMPILER ${PELT_MINGW}-g++-posix)
set(CMAKE_RC_COMPILER ${PELT_MINGW}-windres)
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../scripts/with-wine)

set(CMAKE_FIND_ROOT_PATH /usr/${PELT_MINGW})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE BOTH)
