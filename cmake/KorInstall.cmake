# What `cmake --install` puts in place: the libraries, their public headers below one include folder of
# their own, the CMake package and the pkg-config files. All of it can be moved as a whole.

include(CMakePackageConfigHelpers)

foreach(module korsys korcoreplatform)
    if(APPLE)
        set_target_properties(${module} PROPERTIES INSTALL_RPATH "@loader_path")
    else()
        set_target_properties(${module} PROPERTIES INSTALL_RPATH "$ORIGIN")
    endif()
    # Headers keep their path, so that an #include reads the same in this tree and outside it.
    foreach(header IN LISTS ${module}_headers)
        get_filename_component(folder "${header}" DIRECTORY)
        install(FILES "${KOR_INCLUDE_ROOT}/${header}"
            DESTINATION "${KOR_INSTALL_INCLUDEDIR}/${folder}")
    endforeach()
endforeach()

install(TARGETS korsys korcoreplatform
    EXPORT korcoreplatformTargets
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}")

set(kor_package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/korcoreplatform")
install(EXPORT korcoreplatformTargets NAMESPACE kor:: DESTINATION "${kor_package_dir}")
configure_package_config_file(cmake/korcoreplatformConfig.cmake.in
    "${PROJECT_BINARY_DIR}/korcoreplatformConfig.cmake"
    INSTALL_DESTINATION "${kor_package_dir}"
    NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/korcoreplatformConfigVersion.cmake"
    COMPATIBILITY SameMajorVersion)
install(FILES
    "${PROJECT_BINARY_DIR}/korcoreplatformConfig.cmake"
    "${PROJECT_BINARY_DIR}/korcoreplatformConfigVersion.cmake"
    DESTINATION "${kor_package_dir}")

# The pkg-config files find the prefix from their own place.
set(kor_pkgconfig_dir "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
file(RELATIVE_PATH KOR_PREFIX_FROM_PKGCONFIG "/prefix/${kor_pkgconfig_dir}" "/prefix")
string(REGEX REPLACE "/$" "" KOR_PREFIX_FROM_PKGCONFIG "${KOR_PREFIX_FROM_PKGCONFIG}")
foreach(module korsys korcoreplatform)
    configure_file(cmake/${module}.pc.in "${PROJECT_BINARY_DIR}/${module}.pc" @ONLY)
    install(FILES "${PROJECT_BINARY_DIR}/${module}.pc" DESTINATION "${kor_pkgconfig_dir}")
endforeach()
