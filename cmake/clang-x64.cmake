# 64-bit Windows with clang, as a second opinion on the sources. Clang takes the headers and the
# libraries of MinGW-w64's own compiler, whose folder it does not find by itself.
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(TARVELIN_MINGW_TRIPLE x86_64-w64-mingw32)
set(TARVELIN_MINGW_PRESET mingw-x64)
include("${CMAKE_CURRENT_LIST_DIR}/mingw.cmake")
set(CMAKE_C_COMPILER clang)
set(CMAKE_C_COMPILER_TARGET ${TARVELIN_MINGW_TRIPLE})
set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_CXX_COMPILER_TARGET ${TARVELIN_MINGW_TRIPLE})

file(GLOB folder "/usr/lib/gcc/${TARVELIN_MINGW_TRIPLE}/*-posix")
set(CMAKE_CXX_FLAGS_INIT "-stdlib++-isystem ${folder}/include/c++")
string(APPEND CMAKE_CXX_FLAGS_INIT
       " -stdlib++-isystem ${folder}/include/c++/${TARVELIN_MINGW_TRIPLE}")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-pthread -B${folder} -L${folder}")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-pthread -B${folder} -L${folder}")
