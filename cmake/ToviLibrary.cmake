# The one shared library, of the objects of every folder.
function(tovi_library)
    get_property(folders GLOBAL PROPERTY TOVI_FOLDERS)
    add_library(ToviFoundationKit SHARED)
    add_library(Tovi::FoundationKit ALIAS ToviFoundationKit)
    tovi_compile(ToviFoundationKit)
    target_compile_features(ToviFoundationKit PUBLIC cxx_std_20)
    target_link_libraries(ToviFoundationKit PRIVATE ${folders})
    # This compiler takes the null of an empty reference, which is never used, for an object of no size.
    target_compile_options(ToviFoundationKit INTERFACE
        $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-stringop-overflow>)
    # Calls between the library's own functions go straight there.
    target_link_options(ToviFoundationKit PRIVATE LINKER:-Bsymbolic-functions)
    target_include_directories(ToviFoundationKit INTERFACE
        $<BUILD_INTERFACE:${TOVI_STAGE}/all>
        $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
    set_target_properties(ToviFoundationKit PROPERTIES
        EXPORT_NAME FoundationKit
        LINKER_LANGUAGE CXX
        VERSION ${PROJECT_VERSION}
        # Before 1.0 a minor release may change the binary interface.
        SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}
        LIBRARY_OUTPUT_DIRECTORY ${TOVI_LIBRARY_DIR})
endfunction()

# The library finds its resources beside its own file, so the build tree has the layout of an installation.
set(TOVI_LIBRARY_DIR ${PROJECT_BINARY_DIR}/lib)
set(TOVI_BUNDLE_DIR ${TOVI_LIBRARY_DIR}/ToviFoundationKit)
set(TOVI_INSTALL_BUNDLE_DIR ${CMAKE_INSTALL_LIBDIR}/ToviFoundationKit)
