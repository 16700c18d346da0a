# Defines varnel_settings: the compile and link settings of every target in this tree.
add_library(varnel_settings INTERFACE)
target_include_directories(varnel_settings INTERFACE ${CMAKE_SOURCE_DIR})
target_link_libraries(varnel_settings INTERFACE nlohmann_json::nlohmann_json Threads::Threads)

# The stack that each thread may grow to. A JSON document of kMaxJsonDepth levels (base/json_text.h) takes up
# to 1.2 KB per level to copy and 0.3 KB to serialise in an unoptimised build, and 0.25 KB in a release build.
set(kStackReserve 33554432)

if(MSVC)
  set(CMAKE_MSVC_RUNTIME_LIBRARY "MultiThreaded$<$<CONFIG:Debug>:Debug>")
  target_compile_options(varnel_settings INTERFACE /W4 /permissive- /utf-8 /EHsc /Zc:__cplusplus /Zc:preprocessor
                                                   $<$<BOOL:${VARNEL_WERROR}>:/WX>)
  target_compile_definitions(varnel_settings INTERFACE _CRT_SECURE_NO_WARNINGS) # getenv, sscanf
  target_link_options(varnel_settings INTERFACE /HIGHENTROPYVA /DYNAMICBASE /NXCOMPAT /STACK:${kStackReserve})
else()
  target_compile_options(
    varnel_settings
    INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wold-style-cast -Wnon-virtual-dtor -Woverloaded-virtual
              $<$<BOOL:${VARNEL_WERROR}>:-Werror>)
endif()

if(WIN32)
  # The oldest system that the program runs on is Windows 10.
  target_compile_definitions(varnel_settings INTERFACE UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN
                                                       _WIN32_WINNT=0x0A00 WINVER=0x0A00)
endif()

if(MINGW)
  target_compile_options(varnel_settings INTERFACE -ffunction-sections -fdata-sections)
  target_link_options(varnel_settings INTERFACE -static -Wl,--gc-sections -Wl,--dynamicbase
                      -Wl,--high-entropy-va -Wl,--nxcompat -Wl,--stack,${kStackReserve}
                      $<$<CONFIG:Release>:-s>)
endif()

if(VARNEL_FUZZ)
  target_compile_definitions(varnel_settings INTERFACE VARNEL_FUZZ_BUILD)
endif()
if(VARNEL_SANITIZE OR VARNEL_FUZZ)
  set(sanitizers -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_compile_options(varnel_settings INTERFACE ${sanitizers} $<$<BOOL:${VARNEL_FUZZ}>:-fsanitize=fuzzer-no-link>)
  target_link_options(varnel_settings INTERFACE ${sanitizers})
endif()
