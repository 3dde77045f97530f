# A room that is a library of its own, because of what it links: programs link it, or load it when they need it.
#
#     tovi_module(Mail LIBRARIES PkgConfig::GMIME)
#
# makes libToviFoundationKitMail.so (Tovi::FoundationKitMail) of every *.cpp here, and shows it as a bundle among the
# resources of the library, so that NSBundle finds it by the identifier in Info.strings.
function(tovi_module name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "LIBRARIES")
    string(TOLOWER ${name} folder)
    set(module ToviFoundationKit${name})
    file(GLOB sources CONFIGURE_DEPENDS *.cpp)
    tovi_stage(${folder} ${CMAKE_CURRENT_SOURCE_DIR} ${name})
    set_property(GLOBAL APPEND PROPERTY TOVI_HEADER_FOLDERS "${CMAKE_CURRENT_SOURCE_DIR}=${name}")
    set_property(GLOBAL APPEND PROPERTY TOVI_MODULES ${name})

    add_library(${module} SHARED ${sources})
    add_library(Tovi::FoundationKit${name} ALIAS ${module})
    tovi_compile(${module})
    target_link_libraries(${module} PUBLIC Tovi::FoundationKit PRIVATE ${arg_LIBRARIES})
    # Its operations stay registered, so it stays.
    target_link_options(${module} PRIVATE LINKER:-z,nodelete)
    set_target_properties(${module} PROPERTIES
        EXPORT_NAME FoundationKit${name}
        VERSION ${PROJECT_VERSION}
        SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}
        LIBRARY_OUTPUT_DIRECTORY ${TOVI_LIBRARY_DIR}
        INSTALL_RPATH "$ORIGIN")

    set(bundle Resources/${module}.bundle)
    set(directory ${TOVI_BUNDLE_DIR}/${bundle})
    set(library ../../../lib${module}.so.${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
    file(MAKE_DIRECTORY ${directory})
    file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR}/Info.strings ${directory}/Info.strings SYMBOLIC)
    file(CREATE_LINK ${library} ${directory}/${module}.so SYMBOLIC)
    if(TOVI_INSTALL)
        install(TARGETS ${module} EXPORT ${module} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
        install(FILES Info.strings ${directory}/${module}.so DESTINATION ${TOVI_INSTALL_BUNDLE_DIR}/${bundle})
    endif()
endfunction()
