# Cross build of the Windows game with mingw-w64 (Debian's g++-mingw-w64-x86-64).
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(GLOAMHOLD_MINGW_PREFIX x86_64-w64-mingw32)
# The posix thread model: GoogleTest needs std::mutex, which the win32 model lacks.
set(CMAKE_C_COMPILER ${GLOAMHOLD_MINGW_PREFIX}-gcc-posix)
set(CMAKE_CXX_COMPILER ${GLOAMHOLD_MINGW_PREFIX}-g++-posix)
set(CMAKE_RC_COMPILER ${GLOAMHOLD_MINGW_PREFIX}-windres)

set(CMAKE_FIND_ROOT_PATH /usr/${GLOAMHOLD_MINGW_PREFIX})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Test executables run under Wine (tests/wine-run keeps the output clean and the prefix private;
# tests/wine-test-run tries once more a start that Wine itself failed).
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../tests/wine-test-run)
