# 32-bit Windows with MinGW-w64.
set(CMAKE_SYSTEM_PROCESSOR i686)
set(TARVELIN_MINGW_TRIPLE i686-w64-mingw32)
set(TARVELIN_MINGW_PRESET mingw-x86)
include("${CMAKE_CURRENT_LIST_DIR}/mingw.cmake")
