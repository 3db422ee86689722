# Compiler settings shared by every target, and the function that makes a folder a library.

set(TARVELIN_ARCH x64)
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  set(TARVELIN_ARCH x86)
endif()

add_library(tarvelin_options INTERFACE)
target_include_directories(tarvelin_options INTERFACE "${CMAKE_SOURCE_DIR}")

if(MSVC)
  target_compile_options(tarvelin_options INTERFACE /W4 /utf-8 /permissive-)
  if(TARVELIN_WARNINGS_AS_ERRORS)
    target_compile_options(tarvelin_options INTERFACE /WX)
  endif()
  # Static imports come from the system's folder alone, where Windows knows of that (10 and later).
  add_link_options(/DEPENDENTLOADFLAG:0x800)
else()
  target_compile_options(tarvelin_options INTERFACE -Wall -Wextra -Wpedantic -Wconversion)
  if(TARVELIN_WARNINGS_AS_ERRORS)
    target_compile_options(tarvelin_options INTERFACE -Werror)
  endif()
  # Object files do not tell in which folder they were built.
  add_compile_options("-ffile-prefix-map=${CMAKE_SOURCE_DIR}=.")
endif()

if(MINGW)
  # Unused functions are dropped, stacks are guarded, addresses are random, and the same sources
  # give the same bytes. Windows 7 is 6.1; without the terminal server's mark a Remote Desktop host
  # would answer with a Windows folder of the user's own.
  # Small before fast: what the program waits for are the registry and the window.
  set(CMAKE_C_FLAGS_RELEASE "-Os -DNDEBUG")
  set(CMAKE_CXX_FLAGS_RELEASE "-Os -DNDEBUG")
  set(CMAKE_RC_FLAGS "--codepage=65001")
  add_compile_options(-ffunction-sections -fdata-sections -fstack-protector-strong)
  add_link_options(-static -fstack-protector-strong $<$<CONFIG:Release>:-s>
                   -Wl,--gc-sections,--no-insert-timestamp
                   -Wl,--dynamicbase,--nxcompat,--tsaware
                   -Wl,--major-os-version=6,--minor-os-version=1
                   -Wl,--major-subsystem-version=6,--minor-subsystem-version=1)
  if(TARVELIN_ARCH STREQUAL x64)
    # Sections that lie in the file as in memory are mapped there by Wine too, which reads others.
    add_link_options(-Wl,--high-entropy-va -Wl,--file-alignment,4096)
  endif()
endif()

if(TARVELIN_SANITIZE)
  set(sanitizers -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_compile_options(${sanitizers})
  add_link_options(${sanitizers})
endif()
if(TARVELIN_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

if(WIN32)
  target_compile_definitions(tarvelin_options INTERFACE UNICODE _UNICODE WIN32_LEAN_AND_MEAN
                             NOMINMAX STRICT _WIN32_WINNT=0x0601 WINVER=0x0601)
  # Only what Windows never takes from the program's folder; tools/check-imports.sh says why.
  target_link_libraries(tarvelin_options INTERFACE comctl32 shell32 ole32 gdi32 user32 advapi32
                        ntdll)
endif()

# tarvelin_library(NAME [DEPENDS folders...] [LIBRARIES targets...])
function(tarvelin_library name)
  cmake_parse_arguments(ARG "" "" "DEPENDS;LIBRARIES" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS "${CMAKE_SOURCE_DIR}/${name}/*.cpp"
       "${CMAKE_SOURCE_DIR}/${name}/*.h")
  if(WIN32)
    list(FILTER sources EXCLUDE REGEX "_posix\\.(cpp|h)$")
  else()
    list(FILTER sources EXCLUDE REGEX "_win\\.(cpp|h)$")
  endif()
  list(FILTER sources EXCLUDE REGEX "/main_win\\.cpp$")
  add_library(tarvelin_${name} STATIC ${sources})
  set_target_properties(tarvelin_${name} PROPERTIES LINKER_LANGUAGE CXX)
  target_link_libraries(tarvelin_${name} PUBLIC tarvelin_options ${ARG_LIBRARIES})
  foreach(dependency IN LISTS ARG_DEPENDS)
    target_link_libraries(tarvelin_${name} PUBLIC tarvelin_${dependency})
  endforeach()

  # The whole library has to link with what it depends on and nothing else: a call upwards, which
  # no include need show, would be missing here.
  if(NOT MSVC)
    file(CONFIGURE OUTPUT "${CMAKE_BINARY_DIR}/alone.cpp" CONTENT "int main() {}\n")
    add_executable(tarvelin_${name}_alone "${CMAKE_BINARY_DIR}/alone.cpp")
    target_link_libraries(tarvelin_${name}_alone PRIVATE -Wl,--whole-archive tarvelin_${name}
                          -Wl,--no-whole-archive)
  endif()
endfunction()
