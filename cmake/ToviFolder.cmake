# A folder of the house: one object library that sees its own headers and those of the folders it depends on, no others.
#
#     tovi_folder(Foundation DEPENDS Runtime LIBRARIES ICU::uc)
#
# makes `tovi_foundation` of every *.cpp here; its headers are included as <ToviFoundationKit/Foundation/...>.
# LIBRARIES are for the sources and private headers (*_p.h) only. Find them with find_package(... GLOBAL).

set(TOVI_STAGE ${PROJECT_BINARY_DIR}/include)

# Makes `item` reachable as <ToviFoundationKit/name> for those who may see the folder, and for users of the library.
function(tovi_stage folder item name)
    foreach(stage ${folder} all)
        set(directory ${TOVI_STAGE}/${stage}/ToviFoundationKit)
        file(MAKE_DIRECTORY ${directory})
        file(CREATE_LINK ${item} ${directory}/${name} SYMBOLIC)
    endforeach()
endfunction()

function(tovi_folder_target name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;DEPENDS;LIBRARIES")
    string(TOLOWER ${name} folder)
    if(NOT arg_SOURCES)
        # A folder of headers alone still is a target that others depend on.
        set(arg_SOURCES ${PROJECT_BINARY_DIR}/empty/${folder}.cpp)
        file(CONFIGURE OUTPUT ${arg_SOURCES} CONTENT "")
    endif()

    add_library(tovi_${folder} OBJECT ${arg_SOURCES})
    tovi_compile(tovi_${folder})
    target_compile_definitions(tovi_${folder} PRIVATE ToviFoundationKit_EXPORTS)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        # Lets a source inline and call its own exported functions directly; exported data stays replaceable.
        target_compile_options(tovi_${folder} PRIVATE -fno-semantic-interposition)
    endif()
    target_include_directories(tovi_${folder} PUBLIC ${TOVI_STAGE}/${folder})
    foreach(lower ${arg_DEPENDS})
        string(TOLOWER ${lower} lower)
        target_link_libraries(tovi_${folder} PUBLIC tovi_${lower})
    endforeach()
    target_link_libraries(tovi_${folder} PRIVATE ${arg_LIBRARIES})
    set_property(GLOBAL APPEND PROPERTY TOVI_FOLDERS tovi_${folder})
endfunction()

function(tovi_folder name)
    string(TOLOWER ${name} folder)
    file(GLOB sources CONFIGURE_DEPENDS *.cpp)
    tovi_stage(${folder} ${CMAKE_CURRENT_SOURCE_DIR} ${name})
    tovi_folder_target(${name} SOURCES ${sources} ${ARGN})
    set_property(GLOBAL APPEND PROPERTY TOVI_HEADER_FOLDERS "${CMAKE_CURRENT_SOURCE_DIR}=${name}")
endfunction()

# The top of the house is a folder too, with the other folders in it: its headers are staged one by one.
function(tovi_top_folder)
    file(GLOB sources CONFIGURE_DEPENDS *.cpp)
    file(GLOB headers CONFIGURE_DEPENDS *.h)
    file(MAKE_DIRECTORY ${TOVI_STAGE}/top)
    foreach(header ${headers})
        get_filename_component(file ${header} NAME)
        tovi_stage(top ${header} ${file})
    endforeach()
    tovi_folder_target(Top SOURCES ${sources} ${ARGN})
    set_property(GLOBAL PROPERTY TOVI_TOP_HEADERS ${headers})
endfunction()
