include(CMakePackageConfigHelpers)

install(TARGETS ToviFoundationKit EXPORT ToviFoundationKit LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})

get_property(headers GLOBAL PROPERTY TOVI_TOP_HEADERS)
install(FILES ${headers} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/ToviFoundationKit)
get_property(folders GLOBAL PROPERTY TOVI_HEADER_FOLDERS)
foreach(folder ${folders})
    string(REGEX MATCH "^(.*)=([^=]*)$" ignored ${folder})
    install(DIRECTORY ${CMAKE_MATCH_1}/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/ToviFoundationKit/${CMAKE_MATCH_2}
        FILES_MATCHING PATTERN "*.h" PATTERN "*_p.h" EXCLUDE)
endforeach()

# find_package(ToviFoundationKit)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/ToviFoundationKit)
install(EXPORT ToviFoundationKit NAMESPACE Tovi:: FILE ToviFoundationKitTargets.cmake DESTINATION ${package_dir})
get_property(modules GLOBAL PROPERTY TOVI_MODULES)
foreach(module ${modules})
    install(EXPORT ToviFoundationKit${module} NAMESPACE Tovi:: FILE ToviFoundationKit${module}Targets.cmake
        DESTINATION ${package_dir})
endforeach()
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/ToviFoundationKitConfig.cmake.in
    ${PROJECT_BINARY_DIR}/ToviFoundationKitConfig.cmake
    INSTALL_DESTINATION ${package_dir} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/ToviFoundationKitConfigVersion.cmake
    COMPATIBILITY SameMinorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/ToviFoundationKitConfig.cmake
    ${PROJECT_BINARY_DIR}/ToviFoundationKitConfigVersion.cmake
    DESTINATION ${package_dir})

# pkg-config. Every path is told from the place of the .pc file, so that an installation may be moved.
set(pkgconfig_dir ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH pc_prefix ${pkgconfig_dir} ${CMAKE_INSTALL_PREFIX})
file(RELATIVE_PATH pc_libdir ${pkgconfig_dir} ${CMAKE_INSTALL_FULL_LIBDIR})
file(RELATIVE_PATH pc_includedir ${pkgconfig_dir} ${CMAKE_INSTALL_FULL_INCLUDEDIR})
foreach(path pc_prefix pc_libdir pc_includedir)
    string(REGEX REPLACE "/$" "" ${path} ${${path}})
endforeach()
foreach(module "" ${modules})
    set(template ToviFoundationKit.pc.in)
    if(module)
        set(template ToviModule.pc.in)
    endif()
    set(pc_file ${PROJECT_BINARY_DIR}/ToviFoundationKit${module}.pc)
    configure_file(${PROJECT_SOURCE_DIR}/cmake/${template} ${pc_file} @ONLY)
    install(FILES ${pc_file} DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()

install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
