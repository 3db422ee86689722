# Tarvelin.exe with its resources, and the language files beside it.

if(EXISTS "${CMAKE_SOURCE_DIR}/app/main_win.cpp")
  add_executable(Tarvelin WIN32 app/main_win.cpp)
  target_link_libraries(Tarvelin PRIVATE tarvelin_app)
  if(MINGW)
    target_link_options(Tarvelin PRIVATE -municode)
  endif()

  # The resource compiler does not report what a script includes: every file there counts.
  file(GLOB artwork CONFIGURE_DEPENDS resources/*)
  if(EXISTS "${CMAKE_SOURCE_DIR}/resources/CMakeLists.txt")
    add_subdirectory(resources)
  elseif(EXISTS "${CMAKE_SOURCE_DIR}/resources/tarvelin.rc")
    target_sources(Tarvelin PRIVATE resources/tarvelin.rc)
    set_source_files_properties(resources/tarvelin.rc PROPERTIES OBJECT_DEPENDS "${artwork}")
  endif()

  file(GLOB languages CONFIGURE_DEPENDS resources/languages/*.lng)
  if(languages)
    set(language_dir "$<TARGET_FILE_DIR:Tarvelin>/Toolbox_Language")
    add_custom_target(tarvelin_languages ALL
                      COMMAND "${CMAKE_COMMAND}" -E rm -rf "${language_dir}"
                      COMMAND "${CMAKE_COMMAND}" -E make_directory "${language_dir}"
                      COMMAND "${CMAKE_COMMAND}" -E copy ${languages} "${language_dir}")
  endif()
endif()
