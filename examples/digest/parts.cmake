# Everything of the digest but its main function, as a library that the program, its tests and its fuzzer share.
if(NOT TARGET digest_parts)
    set(digest ${CMAKE_CURRENT_LIST_DIR})
    file(GLOB digest_sources CONFIGURE_DEPENDS
        ${digest}/*.cpp ${digest}/mail/*.cpp ${digest}/sections/*.cpp ${digest}/terminal/*.cpp)
    list(REMOVE_ITEM digest_sources ${digest}/main.cpp)
    add_library(digest_parts STATIC ${digest_sources})
    target_include_directories(digest_parts PUBLIC ${digest})
    target_link_libraries(digest_parts PUBLIC Tovi::FoundationKit)
endif()
