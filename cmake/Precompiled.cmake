# Parsing Qt's and the standard library's headers is most of what compiling a file of ours costs, so sets of them are
# parsed once (cmake/precompiled/): values, on which servers and tasks stand, on which tests stand.
#
#   precompile(set target…)
#
# An include that a file needs stays in the file: the sets are an accelerator and no place for names.

option(MORVANE_PRECOMPILE "Parse the headers of libraries once" ON)
file(WRITE ${CMAKE_BINARY_DIR}/precompiled/empty.cpp "")

# precompiled_set(name libraries…)
function(precompiled_set name)
    if(NOT MORVANE_PRECOMPILE)
        return()
    endif()
    add_library(precompiled_${name} OBJECT ${CMAKE_BINARY_DIR}/precompiled/empty.cpp)
    target_link_libraries(precompiled_${name} PRIVATE ${ARGN} morvane_options)
    # Named without a path of this checkout, so that the compiler cache takes it for the same in another one.
    target_include_directories(precompiled_${name} PRIVATE ${CMAKE_SOURCE_DIR}/cmake)
    target_precompile_headers(precompiled_${name} PRIVATE <precompiled/${name}.h>)
endfunction()

if(MORVANE_PRECOMPILE)
    # GCC takes a precompiled header only under the same macros, and -pthread defines one. The other option lets
    # the compiler cache see through such a header.
    add_compile_options(-pthread $<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess>)
    precompiled_set(values Qt6::Core)
    precompiled_set(tasks Qt6::Core QCoro6::Core)
    if(MORVANE_BUILD_TESTS)
        find_package(GTest REQUIRED)
        precompiled_set(tests Qt6::Core QCoro6::Core GTest::gmock)
    endif()
endif()

function(precompile set)
    if(TARGET precompiled_${set})
        foreach(target IN LISTS ARGN)
            target_precompile_headers(${target} REUSE_FROM precompiled_${set})
        endforeach()
    endif()
endfunction()
