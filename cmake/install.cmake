# The SDK: what a host's team unpacks. `cmake --install` lays it out, scripts/package.sh zips it.
include(CMakePackageConfigHelpers)

get_property(modules DIRECTORY modules PROPERTY BUILDSYSTEM_TARGETS)
if(PICTAVO_FREI0R)
  get_property(effects DIRECTORY samples/frei0r PROPERTY BUILDSYSTEM_TARGETS)
endif()
# All that is installed.
add_custom_target(sdk DEPENDS Pictavo ${modules} pictavo_host ${effects})
if(TARGET Pictavo_msvc_library)
  add_dependencies(sdk Pictavo_msvc_library)
endif()
install(TARGETS Pictavo RUNTIME DESTINATION bin ARCHIVE DESTINATION lib)
install(TARGETS ${modules} pictavo_host RUNTIME DESTINATION bin)
install(DIRECTORY include/pictavo DESTINATION include)
install(DIRECTORY samples DESTINATION .)
install(FILES README.md NOTICE.md CHANGELOG.md CONTRIBUTING.md SECURITY.md DESTINATION .)
install(DIRECTORY docs DESTINATION . FILES_MATCHING PATTERN "*.md" PATTERN "*.svg")
# scripts/docs.sh makes these.
install(DIRECTORY build/docs/pictures/ DESTINATION docs OPTIONAL)
install(DIRECTORY build/docs/html DESTINATION docs OPTIONAL)
install(FILES ${PICTAVO_MSVC_LIBRARY} DESTINATION lib)

set(config ${CMAKE_CURRENT_BINARY_DIR}/config)
configure_package_config_file(cmake/PictavoConfig.cmake.in ${config}/PictavoConfig.cmake
  INSTALL_DESTINATION lib/cmake/Pictavo NO_SET_AND_CHECK_MACRO NO_CHECK_REQUIRED_COMPONENTS_MACRO)
write_basic_package_version_file(${config}/PictavoConfigVersion.cmake
  COMPATIBILITY SameMinorVersion ARCH_INDEPENDENT)
install(FILES ${config}/PictavoConfig.cmake ${config}/PictavoConfigVersion.cmake
  DESTINATION lib/cmake/Pictavo)
configure_file(cmake/pictavo.pc.in ${config}/pictavo.pc @ONLY)
install(FILES ${config}/pictavo.pc DESTINATION lib/pkgconfig)

# Debug symbols lie beside each program and DLL, which name them. The folder may hold others' DLLs.
if(MINGW)
  set(binaries)
  foreach(target Pictavo ${modules} pictavo_host)
    list(APPEND binaries "$<TARGET_FILE_NAME:${target}>")
  endforeach()
  install(CODE "set(objcopy \"${CMAKE_OBJCOPY}\")")
  install(CODE "set(binaries \"${binaries}\")")
  install(CODE [[
    foreach(name ${binaries})
      set(binary "$ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}/bin/${name}")
      foreach(arguments "--only-keep-debug;${binary};${binary}.debug" "--strip-all;${binary}"
                        "--add-gnu-debuglink=${binary}.debug;${binary}")
        execute_process(COMMAND ${objcopy} ${arguments} COMMAND_ERROR_IS_FATAL ANY)
      endforeach()
    endforeach()
  ]])
endif()
