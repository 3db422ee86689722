# What the two MinGW-w64 toolchains share; included with TARVELIN_MINGW_TRIPLE and
# TARVELIN_MINGW_PRESET set. It names compilers and places only: flags set here would count at the
# first configuration of a build folder and never again.
set(CMAKE_SYSTEM_NAME Windows)

# The POSIX threads variant has std::mutex and std::thread; linked statically it needs no DLL.
set(CMAKE_C_COMPILER ${TARVELIN_MINGW_TRIPLE}-gcc-posix)
set(CMAKE_CXX_COMPILER ${TARVELIN_MINGW_TRIPLE}-g++-posix)
set(CMAKE_RC_COMPILER ${TARVELIN_MINGW_TRIPLE}-windres)

# Only libraries for Windows are found; zlib's import library, which would need a DLL, is passed by.
# A path with ".." would be written out in full by the second configuration, which rebuilds all.
get_filename_component(TARVELIN_DEPS "${CMAKE_CURRENT_LIST_DIR}" DIRECTORY)
set(CMAKE_FIND_ROOT_PATH "${TARVELIN_DEPS}/build/deps/${TARVELIN_MINGW_PRESET}"
    /usr/${TARVELIN_MINGW_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ZLIB_LIBRARY /usr/${TARVELIN_MINGW_TRIPLE}/lib/libz.a CACHE FILEPATH "zlib")
