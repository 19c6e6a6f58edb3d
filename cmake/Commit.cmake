cmake_minimum_required(VERSION 3.25)

# Writes which commit is being built to FILE, when that isn't there already: `given`, or what git says of SOURCE.
set(commit "${given}")
if(commit STREQUAL "")
    execute_process(COMMAND git -C ${SOURCE} describe --always --dirty --abbrev=12 --exclude=*
        OUTPUT_VARIABLE commit ERROR_QUIET OUTPUT_STRIP_TRAILING_WHITESPACE)
endif()
if(NOT commit MATCHES "^[0-9a-z-]+$")
    set(commit "not known")
endif()
file(CONFIGURE OUTPUT ${FILE} @ONLY CONTENT "#pragma once

// Written by the build.
inline constexpr char morvaneCommit[] = \"@commit@\";
")
