# What the two MinGW-w64 toolchains share; included with TARVELIN_MINGW_TRIPLE and
# TARVELIN_MINGW_PRESET set. build-deps.sh builds the libraries with the same settings.
set(CMAKE_SYSTEM_NAME Windows)

# The POSIX threads variant has std::mutex and std::thread; linked statically it needs no DLL.
set(CMAKE_C_COMPILER ${TARVELIN_MINGW_TRIPLE}-gcc-posix)
set(CMAKE_CXX_COMPILER ${TARVELIN_MINGW_TRIPLE}-g++-posix)
set(CMAKE_RC_COMPILER ${TARVELIN_MINGW_TRIPLE}-windres)

# Only libraries for Windows are found; zlib's import library, which would need a DLL, is passed by.
set(CMAKE_FIND_ROOT_PATH "${CMAKE_CURRENT_LIST_DIR}/../build/deps/${TARVELIN_MINGW_PRESET}"
    /usr/${TARVELIN_MINGW_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ZLIB_LIBRARY /usr/${TARVELIN_MINGW_TRIPLE}/lib/libz.a CACHE FILEPATH "zlib")

# Unused functions are dropped, stacks are guarded, addresses are random, and the same sources give
# the same bytes.
set(flags "-ffunction-sections -fdata-sections -fstack-protector-strong")
set(CMAKE_C_FLAGS_INIT "${flags}")
set(CMAKE_CXX_FLAGS_INIT "${flags}")
set(CMAKE_C_FLAGS_RELEASE "-O2 -DNDEBUG" CACHE STRING "")
set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG" CACHE STRING "")
set(CMAKE_RC_FLAGS_INIT "--codepage=65001")
set(flags "-static -Wl,--gc-sections,--no-insert-timestamp,--dynamicbase,--nxcompat")
if(TARVELIN_MINGW_PRESET STREQUAL mingw-x64)
  string(APPEND flags ",--high-entropy-va")
endif()
set(CMAKE_EXE_LINKER_FLAGS_INIT "${flags}")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "${flags}")
set(CMAKE_EXE_LINKER_FLAGS_RELEASE_INIT "-s")
set(CMAKE_SHARED_LINKER_FLAGS_RELEASE_INIT "-s")
