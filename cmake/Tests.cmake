# Tests: one GoogleTest program for a folder of src/, and fuzz targets that replay in the everyday run.

include(GoogleTest)
find_package(GTest REQUIRED)

# What each test process may see of the machine: nothing. No display, no session bus, a home of its own.
set(MORVANE_TEST_ENVIRONMENT
    QT_QPA_PLATFORM=offscreen
    QT_QUICK_BACKEND=software
    QT_LOGGING_RULES=
    DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent
    HOME=${CMAKE_BINARY_DIR}/test-home
    XDG_DATA_HOME=${CMAKE_BINARY_DIR}/test-home/data
    XDG_CONFIG_HOME=${CMAKE_BINARY_DIR}/test-home/config
    XDG_RUNTIME_DIR=${CMAKE_BINARY_DIR}/test-home/run
    XDG_STATE_HOME=${CMAKE_BINARY_DIR}/test-home/state
    UBSAN_OPTIONS=print_stacktrace=1
    TSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/tests/support/races.supp
    LSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/tests/support/leaks.supp:print_suppressions=0)
file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/test-home/run)
file(CHMOD ${CMAKE_BINARY_DIR}/test-home/run PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)

# add_morvane_test(name [MOC] SOURCES … LIBS …): each case becomes a ctest test of its own.
function(add_morvane_test name)
    cmake_parse_arguments(TEST "MOC" "" "SOURCES;LIBS" ${ARGN})
    add_executable(${name} ${TEST_SOURCES})
    target_link_libraries(${name} PRIVATE ${TEST_LIBS} test_support test_main morvane_options)
    # By env: of a list of variables given as a property of discovered tests, CMake keeps only the first.
    set_target_properties(${name} PROPERTIES
        AUTOMOC ${TEST_MOC}
        RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests
        CROSSCOMPILING_EMULATOR "env;${MORVANE_TEST_ENVIRONMENT}")
    precompile(tests ${name})
    gtest_discover_tests(${name}
        DISCOVERY_MODE PRE_TEST
        DISCOVERY_TIMEOUT 60
        PROPERTIES TIMEOUT 240)
endfunction()

# run_alone(TEST…): tests by their names in ctest that live in real time, as sound does, get the machine for themselves.
function(run_alone)
    set(file ${CMAKE_CURRENT_BINARY_DIR}/run_alone.cmake)
    list(JOIN ARGN " " tests)
    file(WRITE ${file} "set_tests_properties(${tests} PROPERTIES RUN_SERIAL TRUE)\n")
    set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES ${file})
endfunction()

# add_morvane_fuzzer(name SOURCES … LIBS … CORPUS folder): `SOURCES` define fuzz() of fuzz/Fuzz.h. Under the fuzz
# preset the target is a libFuzzer program. Otherwise a small driver replays the corpus and mutates it
# for a fixed number of rounds with a fixed seed, so the everyday run is short and repeatable.
function(add_morvane_fuzzer name)
    cmake_parse_arguments(FUZZ "" "CORPUS" "SOURCES;LIBS" ${ARGN})
    add_executable(${name} ${FUZZ_SOURCES} ${CMAKE_SOURCE_DIR}/tests/fuzz/Fuzz.cpp)
    target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests)
    target_link_libraries(${name} PRIVATE ${FUZZ_LIBS} utils_text utils_bytes Qt6::Core morvane_options)
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/fuzz)
    precompile(tasks ${name})
    if(MORVANE_LIBFUZZER)
        target_link_options(${name} PRIVATE -fsanitize=fuzzer)
    else()
        target_sources(${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests/fuzz/ReplayDriver.cpp)
        add_test(NAME fuzz.${name} COMMAND ${name} ${FUZZ_CORPUS})
        set_tests_properties(fuzz.${name} PROPERTIES TIMEOUT 120 ENVIRONMENT "${MORVANE_TEST_ENVIRONMENT}")
    endif()
endfunction()
