cmake_minimum_required(VERSION 3.25)

# Writes which commit is being built to FILE, when that isn't there already: `given`, or what git says of SOURCE, or,
# where that is a package's tree and no checkout, what the package's changelog says it was made from.
set(commit "${given}")
if(commit STREQUAL "" AND EXISTS ${SOURCE}/.git)
    execute_process(COMMAND git -C ${SOURCE} describe --always --dirty --abbrev=12 --exclude=*
        OUTPUT_VARIABLE commit ERROR_QUIET OUTPUT_STRIP_TRAILING_WHITESPACE)
elseif(commit STREQUAL "" AND EXISTS ${SOURCE}/debian/changelog)
    file(STRINGS ${SOURCE}/debian/changelog lines REGEX "Made from commit [0-9a-f]+" LIMIT_COUNT 1)
    string(REGEX REPLACE ".*Made from commit ([0-9a-f]+).*" "\\1" commit "${lines}")
endif()
if(NOT commit MATCHES "^[0-9a-z-]+$")
    set(commit "not known")
endif()
file(CONFIGURE OUTPUT ${FILE} @ONLY CONTENT "#pragma once

// Written by the build.
inline constexpr char morvaneCommit[] = \"@commit@\";
")
