# Compiler settings for our own code. Linked by every target through `morvane_options`.

add_library(morvane_options INTERFACE)

target_compile_options(morvane_options INTERFACE
    -Wall -Wextra -Wpedantic $<IF:$<CXX_COMPILER_ID:GNU>,-Wshadow=local,-Wshadow> -Wnon-virtual-dtor -Woverloaded-virtual
    -Wno-missing-field-initializers # designated initialisers leave members at their defaults
    -Werror)

target_compile_definitions(morvane_options INTERFACE
    QT_NO_KEYWORDS          # glib headers use `signals`
    QT_NO_FOREACH
    QT_NO_CAST_TO_ASCII
    QT_DISABLE_DEPRECATED_BEFORE=0x060400
    MORVANE_VERSION="${PROJECT_VERSION}")

if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # GCC 12 reports these inside coroutine frames and std::variant at -O2 with no cause in the source.
    target_compile_options(morvane_options INTERFACE -Wno-maybe-uninitialized -Wno-dangling-pointer)
    # Collecting its garbage takes a tenth of what a file of ours costs, and few files need half a gigabyte. kB.
    add_compile_options(--param=ggc-min-heapsize=524288)
endif()

if(CMAKE_BUILD_TYPE STREQUAL "Release")
    # -fPIC for libraries and programs alike, and not CMake's own choice of one for each: they share precompiled
    # headers. Not -fPIE: a program would hold copies of Qt's own data, and Qt 6.4 crashes on them at the start.
    target_compile_options(morvane_options INTERFACE
        -fPIC -fstack-protector-strong -fstack-clash-protection -fcf-protection -D_FORTIFY_SOURCE=2 -D_GLIBCXX_ASSERTIONS)
    target_link_options(morvane_options INTERFACE -Wl,-z,relro,-z,now -pie)
endif()

