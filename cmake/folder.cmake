# varnel_folder(<name> [USES <folder>...] [PORTABLE ...] [WINDOWS ...] [SYSTEM_LIBRARIES ...]
#               [TESTS ...] [WINDOWS_TESTS ...] [FUZZ ...])
#
# Adds one static library varnel_<name> for a folder. PORTABLE sources compile everywhere, WINDOWS sources
# only for Windows. TESTS join the binary portable_tests, WINDOWS_TESTS the binary windows_tests. In a fuzz
# build, each FUZZ file is one libFuzzer target; in a test build, portable_tests replays its stored corpus.
function(varnel_folder name)
  cmake_parse_arguments(arg "" "" "USES;PORTABLE;WINDOWS;SYSTEM_LIBRARIES;TESTS;WINDOWS_TESTS;FUZZ" ${ARGN})
  set(library varnel_${name})
  set(sources ${arg_PORTABLE})
  if(WIN32)
    list(APPEND sources ${arg_WINDOWS})
  endif()
  add_library(${library} STATIC ${sources})
  list(TRANSFORM arg_USES PREPEND varnel_)
  target_link_libraries(${library} PUBLIC varnel_settings ${arg_USES})
  if(WIN32)
    target_link_libraries(${library} PUBLIC ${arg_SYSTEM_LIBRARIES})
  endif()

  list(TRANSFORM arg_TESTS PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
  list(TRANSFORM arg_WINDOWS_TESTS PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
  if(VARNEL_FUZZ)
    foreach(file ${arg_FUZZ})
      get_filename_component(target ${file} NAME_WE)
      add_executable(${target} ${file} ${CMAKE_SOURCE_DIR}/testing/native_text.cpp
                               ${CMAKE_SOURCE_DIR}/testing/recording_page.cpp)
      target_link_libraries(${target} PRIVATE ${library})
      target_link_options(${target} PRIVATE -fsanitize=fuzzer)
    endforeach()
  else()
    list(TRANSFORM arg_FUZZ PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
    set_property(GLOBAL APPEND PROPERTY varnel_portable_tests ${arg_TESTS} ${arg_FUZZ})
    set_property(GLOBAL APPEND PROPERTY varnel_windows_tests ${arg_WINDOWS_TESTS})
    set_property(GLOBAL APPEND PROPERTY varnel_libraries ${library})
  endif()
endfunction()
