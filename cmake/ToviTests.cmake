# Tests that need the library as a host finds it, installed under TOVI_TEST_PREFIX. They are labelled "slow".

set(TOVI_TEST_PREFIX ${PROJECT_BINARY_DIR}/prefix)
# A sanitized library loads into sanitized programs only; hosts are built as hosts are.
if(PROJECT_IS_TOP_LEVEL AND TOVI_INSTALL AND NOT TOVI_SANITIZE)
    set(TOVI_TEST_INSTALLED ON)
    add_test(NAME install COMMAND sh -c
        "rm -rf '${TOVI_TEST_PREFIX}' && '${CMAKE_COMMAND}' --install '${PROJECT_BINARY_DIR}' --prefix '${TOVI_TEST_PREFIX}'")
    set_tests_properties(install PROPERTIES FIXTURES_SETUP installed LABELS slow)
endif()

# Configures and builds the project in `source` as a host would, and runs the command that follows in its build folder.
function(tovi_add_host_test name source)
    cmake_parse_arguments(PARSE_ARGV 2 arg "" "" "OPTIONS;COMMAND")
    set(folder ${PROJECT_BINARY_DIR}/hosts/${name})
    add_test(NAME ${name} COMMAND ${CMAKE_CTEST_COMMAND}
        --build-and-test ${source} ${folder}
        --build-generator ${CMAKE_GENERATOR}
        --build-options -DCMAKE_CXX_COMPILER=${CMAKE_CXX_COMPILER} ${arg_OPTIONS}
        --test-command ${arg_COMMAND})
    set_tests_properties(${name} PROPERTIES FIXTURES_REQUIRED installed LABELS slow)
    if(TOVI_CCACHE)
        set_tests_properties(${name} PROPERTIES ENVIRONMENT CMAKE_CXX_COMPILER_LAUNCHER=${TOVI_CCACHE})
    endif()
endfunction()
