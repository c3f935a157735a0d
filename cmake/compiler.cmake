# What every target of this project is compiled with. Link `pictavo_flags`.
add_library(pictavo_flags INTERFACE)
target_include_directories(pictavo_flags INTERFACE
  ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}/modules)

if(MSVC)  # cl and clang-cl
  target_compile_options(pictavo_flags INTERFACE /W4 /WX /fp:precise /utf-8)
else()
  # Float rules are exact and in the stated order: no contraction into fused multiply-adds. Roots are
  # the processor's, without the C library's errno for negative numbers, which MinGW sets by way of
  # the x87 unit.
  target_compile_options(pictavo_flags INTERFACE
    -Wall -Wextra -Wconversion -Wshadow -Wnon-virtual-dtor -Werror -ffp-contract=off
    -fno-math-errno)
endif()

if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # The note that 256-bit values are passed differently without AVX: ours never leave their file.
  target_compile_options(pictavo_flags INTERFACE -Wno-psabi)
endif()

if(MINGW)
  # Self-contained: no compiler runtime beside the DLL.
  target_link_options(pictavo_flags INTERFACE -static)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # The stack may be 16-byte aligned only; unaligned moves cost nothing on today's processors.
    target_compile_options(pictavo_flags INTERFACE -Wa,-muse-unaligned-vector-move)
  endif()
  target_compile_definitions(pictavo_flags INTERFACE
    UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN _WIN32_WINNT=0x0A00)
endif()

if(PICTAVO_SANITIZE STREQUAL "thread")
  target_compile_options(pictavo_flags INTERFACE -fsanitize=thread)
  # Tests and the sanitizer both replace operators new.
  target_link_options(pictavo_flags INTERFACE -fsanitize=thread -Wl,-z,muldefs)
elseif(PICTAVO_SANITIZE)
  target_compile_options(pictavo_flags INTERFACE
    -fsanitize=address,undefined,fuzzer-no-link -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(pictavo_flags INTERFACE -fsanitize=address,undefined)
endif()

# Gives a DLL its name on disk, a version resource, and an end that leaves nothing behind.
#   pictavo_dll(target NAME DESCRIPTION)
function(pictavo_dll target name description)
  set(VERSION_TARGET ${name})
  set(VERSION_FILE ${name}.dll)
  set(VERSION_DESCRIPTION ${description})
  set(rc ${CMAKE_CURRENT_BINARY_DIR}/${target}.rc)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/version.rc.in ${rc} @ONLY)
  target_sources(${target} PRIVATE ${rc} ${PROJECT_SOURCE_DIR}/src/platform/unload.cpp)
  # No "lib" in front: hosts and the library load these by their plain names.
  set_target_properties(${target} PROPERTIES OUTPUT_NAME ${name} PREFIX "")
endfunction()
