# Headers go to <includedir>/audio_filter, so that hosts and sources use the same include lines.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/audio_filter")

install(TARGETS audio_filter EXPORT audio_filter-targets
        FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/audio_filter")
if(AUDIO_FILTER_STREAM)
  install(TARGETS audio_filter_stream EXPORT audio_filter-targets
          FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/audio_filter")
endif()
if(AUDIO_FILTER_C)
  install(TARGETS audio_filter_c EXPORT audio_filter-targets
          FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
  if(WIN32)
    install(FILES "$<TARGET_FILE_DIR:audio_filter_c>/audiofilter.def" DESTINATION "${CMAKE_INSTALL_LIBDIR}")
  endif()
endif()
install(EXPORT audio_filter-targets NAMESPACE audio_filter:: DESTINATION "${package_dir}")
configure_package_config_file("${CMAKE_CURRENT_LIST_DIR}/audio_filter-config.cmake.in" audio_filter-config.cmake
                              INSTALL_DESTINATION "${package_dir}")
write_basic_package_version_file(audio_filter-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/audio_filter-config.cmake"
              "${CMAKE_CURRENT_BINARY_DIR}/audio_filter-config-version.cmake"
              "${CMAKE_CURRENT_LIST_DIR}/FindWebRtcAudioProcessing.cmake"
        DESTINATION "${package_dir}")

# pkg-config files. They find their headers and libraries relative to themselves, so that the tree may be moved, unless the
# folder of the libraries is absolute.
# Usage: install_pkg_config(NAME DESCRIPTION CFLAGS LIBS [REQUIRES])
function(install_pkg_config name description cflags libs)
  set(requires "${ARGN}")
  set(pkg_config_dir "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
  set(prefix "${CMAKE_INSTALL_PREFIX}")
  if(NOT IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
    file(RELATIVE_PATH prefix "/prefix/${pkg_config_dir}" "/prefix")
    string(PREPEND prefix "\${pcfiledir}/")
  endif()
  set(includedir "\${prefix}")
  cmake_path(APPEND includedir "${CMAKE_INSTALL_INCLUDEDIR}")
  set(libdir "\${prefix}")
  cmake_path(APPEND libdir "${CMAKE_INSTALL_LIBDIR}")
  configure_file("${PROJECT_SOURCE_DIR}/cmake/pkg-config.pc.in" ${name}.pc @ONLY)
  install(FILES "${CMAKE_CURRENT_BINARY_DIR}/${name}.pc" DESTINATION "${pkg_config_dir}")
endfunction()

if(AUDIO_FILTER_SHARED)
  install_pkg_config(audio_filter "Cleans up captured audio in real time, inside a media engine (C++)"
                     "-I\${includedir}/audio_filter" "-laudio_filter")
  if(AUDIO_FILTER_STREAM)
    install_pkg_config(audio_filter_stream "Cleans an audio stream of any rate, with constant latency (C++)" ""
                       "-laudio_filter_stream" audio_filter)
  endif()
endif()
if(AUDIO_FILTER_C)
  install_pkg_config(audiofilter "Cleans an audio stream of any rate, with constant latency (C)"
                     "-I\${includedir}" "-laudiofilter")
endif()

# The reference, after scripts/build_reference: cmake --install DIR --component reference
install(DIRECTORY "${PROJECT_SOURCE_DIR}/build/docs/" DESTINATION "${CMAKE_INSTALL_DOCDIR}/html" COMPONENT reference
        EXCLUDE_FROM_ALL)
