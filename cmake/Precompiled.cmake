# Parsing Qt's and the standard library's headers is most of what compiling a file of ours costs, so three sets
# of them are parsed once: values, tasks and tests (cmake/precompiled/). Each stands on the one before.
#
#   precompile(target set)
#
# An include that a file needs stays in the file: the sets are an accelerator and no place for names.

option(MORVANE_PRECOMPILE "Parse the headers of libraries once" ON)
file(WRITE ${CMAKE_BINARY_DIR}/precompiled/empty.cpp "")

function(_precompiled_set name)
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
    _precompiled_set(values Qt6::Core)
    _precompiled_set(tasks Qt6::Core QCoro6::Core)
    if(MORVANE_BUILD_TESTS)
        find_package(GTest REQUIRED)
        _precompiled_set(tests Qt6::Core QCoro6::Core GTest::gmock)
    endif()
endif()

function(precompile target set)
    if(TARGET precompiled_${set})
        target_precompile_headers(${target} REUSE_FROM precompiled_${set})
    endif()
endfunction()
