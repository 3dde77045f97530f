# How everything of this project is compiled. Nothing here reaches a program that uses the library.

if(PROJECT_IS_TOP_LEVEL)
    set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
    find_program(TOVI_CCACHE ccache)
    if(TOVI_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
        # The sloppiness is what lets ccache keep translation units that use a precompiled header.
        set(CMAKE_CXX_COMPILER_LAUNCHER
            ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros ${TOVI_CCACHE})
    endif()
    if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
        # As the preset dev: optimized, but with assertions.
        set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "Build type" FORCE)
        set(CMAKE_CXX_FLAGS_RELWITHDEBINFO "-O2 -g" CACHE STRING "Flags of this build type" FORCE)
    endif()
endif()

function(tovi_compile target)
    set_target_properties(${target} PROPERTIES
        CXX_STANDARD 20
        CXX_STANDARD_REQUIRED ON
        CXX_EXTENSIONS OFF
        POSITION_INDEPENDENT_CODE ON
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON
        COMPILE_WARNING_AS_ERROR ${TOVI_WARNINGS_AS_ERRORS})
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
        # They find fault with the insides of std::string.
        target_compile_options(${target} PRIVATE -Wno-restrict -Wno-array-bounds -Wno-stringop-overflow
            -Wno-stringop-overread)
    endif()
    if(TOVI_SANITIZE)
        target_compile_options(${target} PRIVATE
            -fsanitize=${TOVI_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
        target_link_options(${target} PRIVATE -fsanitize=${TOVI_SANITIZE})
    endif()
endfunction()

# A precompiled header that ccache understands: tovi_precompile(target <header>...), or, for a target that is compiled
# alike, tovi_precompile(target REUSE_FROM other).
function(tovi_precompile target)
    if(ARGV1 STREQUAL "REUSE_FROM")
        target_precompile_headers(${target} ${ARGN})
    else()
        target_precompile_headers(${target} PRIVATE ${ARGN})
    endif()
    if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
        target_compile_options(${target} PRIVATE "SHELL:-Xclang -fno-pch-timestamp")
    else()
        target_compile_options(${target} PRIVATE -fpch-preprocess)
    endif()
endfunction()
