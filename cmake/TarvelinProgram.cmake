# Tarvelin.exe with its resources, and the language files beside it.
add_executable(Tarvelin WIN32 app/main_win.cpp)
target_link_libraries(Tarvelin PRIVATE tarvelin_app)
if(MINGW)
  target_link_options(Tarvelin PRIVATE -municode)
  # An exception that nobody catches ends the program as before, but without a last word on a console
  # that it does not have: that word costs 47,000 bytes. The 32-bit names have one more underscore.
  set(handler _ZN9__gnu_cxx27__verbose_terminate_handlerEv=abort)
  if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    set(handler __ZN9__gnu_cxx27__verbose_terminate_handlerEv=_abort)
  endif()
  target_link_options(Tarvelin PRIVATE -Wl,--defsym=${handler})
endif()
add_subdirectory(resources)

# A language that was taken out goes from the build folder as well.
file(GLOB languages CONFIGURE_DEPENDS resources/languages/*.lng)
set(language_dir "${CMAKE_BINARY_DIR}/Toolbox_Language")
set(language_stamp "${CMAKE_BINARY_DIR}/languages.stamp")
if(CMAKE_CONFIGURATION_TYPES)
  set(language_dir "${CMAKE_BINARY_DIR}/$<CONFIG>/Toolbox_Language")
  set(language_stamp "${CMAKE_BINARY_DIR}/languages-$<CONFIG>.stamp")
endif()
add_custom_command(OUTPUT "${language_stamp}"
                   COMMAND "${CMAKE_COMMAND}" -E rm -rf "${language_dir}"
                   COMMAND "${CMAKE_COMMAND}" -E make_directory "${language_dir}"
                   COMMAND "${CMAKE_COMMAND}" -E copy ${languages} "${language_dir}"
                   COMMAND "${CMAKE_COMMAND}" -E touch "${language_stamp}"
                   DEPENDS ${languages} VERBATIM)
add_custom_target(tarvelin_languages ALL DEPENDS "${language_stamp}")

if(MINGW)
  add_test(NAME check_exe_${TARVELIN_ARCH}
           COMMAND "${CMAKE_SOURCE_DIR}/tools/check-exe.py" $<TARGET_FILE:Tarvelin>
                   ${PROJECT_VERSION})
  set_tests_properties(check_exe_${TARVELIN_ARCH} PROPERTIES LABELS check)
endif()
