# 64-bit Windows with MinGW-w64.
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(TARVELIN_MINGW_TRIPLE x86_64-w64-mingw32)
set(TARVELIN_MINGW_PRESET mingw-x64)
include("${CMAKE_CURRENT_LIST_DIR}/mingw.cmake")
