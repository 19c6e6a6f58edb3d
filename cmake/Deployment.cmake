# Deployment values: deployment/<name>.json, checked here and compiled in.
#
# Each value has a line at the end of this file: its key, its kind, and OPTIONAL when a deployment may lack it.
# Code reads it as DeploymentValues::<key> from "deployment/DeploymentValues.h" by linking
# `deployment_values`: a constexpr QLatin1StringView, empty where an optional value is absent.
#
#   DIGEST   64 lower-case hexadecimal characters
#   URL      an https address, or a loopback one over http
#   TEXT     any text without control characters, quotes or backslashes
#   ARRAY    a JSON array, given to the code as its text

set(MORVANE_DEPLOYMENT production CACHE STRING "Deployment whose values are compiled in: deployment/<name>.json")
set(MORVANE_DEPLOYMENT_FILE ${CMAKE_SOURCE_DIR}/deployment/${MORVANE_DEPLOYMENT}.json)
if(NOT EXISTS ${MORVANE_DEPLOYMENT_FILE})
    message(FATAL_ERROR "There is no deployment/${MORVANE_DEPLOYMENT}.json.")
endif()
set_property(DIRECTORY ${CMAKE_SOURCE_DIR} APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${MORVANE_DEPLOYMENT_FILE})
file(READ ${MORVANE_DEPLOYMENT_FILE} MORVANE_DEPLOYMENT_JSON)

set(MORVANE_DEPLOYMENT_KEYS)
set(MORVANE_DEPLOYMENT_LINES)

# deployment_value(key kind [OPTIONAL])
macro(deployment_value key kind)
    list(APPEND MORVANE_DEPLOYMENT_KEYS ${key})
    _deployment_read(${key} ${kind} "${ARGN}" text)
    string(APPEND MORVANE_DEPLOYMENT_LINES "inline constexpr QLatin1StringView ${key}{R\"json(${text})json\"};\n")
endmacro()

function(_deployment_read key kind optional result)
    string(JSON type ERROR_VARIABLE missing TYPE "${MORVANE_DEPLOYMENT_JSON}" ${key})
    if(missing AND optional STREQUAL "OPTIONAL")
        set(${result} "" PARENT_SCOPE)
        return()
    endif()
    set(expected STRING)
    if(kind STREQUAL "ARRAY")
        set(expected ARRAY)
    endif()
    if(missing OR NOT type STREQUAL expected)
        message(FATAL_ERROR "deployment/${MORVANE_DEPLOYMENT}.json: \"${key}\" is no ${kind}.")
    endif()
    string(JSON text GET "${MORVANE_DEPLOYMENT_JSON}" ${key})
    _deployment_check(${kind} "${text}" good)
    if(NOT good)
        message(FATAL_ERROR "deployment/${MORVANE_DEPLOYMENT}.json: \"${key}\" is no ${kind}.")
    endif()
    set(${result} "${text}" PARENT_SCOPE)
endfunction()

function(_deployment_check kind text result)
    string(LENGTH "${text}" length)
    set(good FALSE)
    if(kind STREQUAL "DIGEST")
        if(length EQUAL 64 AND text MATCHES "^[0-9a-f]+$")
            set(good TRUE)
        endif()
    elseif(kind STREQUAL "URL")
        if(text MATCHES "^https://[^\" ]+$" OR text MATCHES "^http://(127\\.0\\.0\\.1|localhost)(:[0-9]+)?(/[^\" ]*)?$")
            set(good TRUE)
        endif()
    elseif(kind STREQUAL "TEXT")
        if(NOT text MATCHES "[\"\\\\\n\r\t]")
            set(good TRUE)
        endif()
    elseif(kind STREQUAL "ARRAY")
        set(good TRUE)
    else()
        message(FATAL_ERROR "There is no kind of deployment value named ${kind}.")
    endif()
    set(${result} ${good} PARENT_SCOPE)
endfunction()

# A key that no line below names is a slip of the pen, and would be ignored in silence.
function(_deployment_refuse_unknown_keys)
    string(JSON count LENGTH "${MORVANE_DEPLOYMENT_JSON}")
    math(EXPR last "${count} - 1")
    foreach(i RANGE ${last})
        string(JSON key MEMBER "${MORVANE_DEPLOYMENT_JSON}" ${i})
        if(NOT key IN_LIST MORVANE_DEPLOYMENT_KEYS)
            message(FATAL_ERROR "deployment/${MORVANE_DEPLOYMENT}.json: \"${key}\" is not a known value.")
        endif()
    endforeach()
endfunction()

# An accepted server counts only when all of it is known; say which ones don't, and why.
function(_deployment_report_incomplete_servers)
    string(JSON count LENGTH "${MORVANE_DEPLOYMENT_JSON}" acceptedServers)
    set(index 0)
    while(index LESS count)
        string(JSON label ERROR_VARIABLE unnamed GET "${MORVANE_DEPLOYMENT_JSON}" acceptedServers ${index} label)
        foreach(key IN ITEMS mrtd rtmr0 rtmr1 rtmr2)
            string(JSON value ERROR_VARIABLE missing GET "${MORVANE_DEPLOYMENT_JSON}" acceptedServers ${index} ${key})
            if(missing)
                message(STATUS "Accepted server \"${label}\" has no known ${key}: this build accepts no server through it.")
                break()
            endif()
        endforeach()
        math(EXPR index "${index} + 1")
    endwhile()
endfunction()

deployment_value(intelRootSHA256 DIGEST)
deployment_value(quotingEnclaveSigner DIGEST)
deployment_value(nvidiaRootSHA256 DIGEST)
deployment_value(acceptedServers ARRAY)
deployment_value(privateCloudURL URL OPTIONAL)
deployment_value(searchEndpoint URL OPTIONAL)

_deployment_refuse_unknown_keys()
_deployment_report_incomplete_servers()
file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/include/deployment_values/deployment/DeploymentValues.h CONTENT
"#pragma once

#include <QLatin1StringView>

// Written by the build from deployment/@MORVANE_DEPLOYMENT@.json.
namespace morvane::DeploymentValues {

inline constexpr QLatin1StringView deploymentName{\"@MORVANE_DEPLOYMENT@\"};
@MORVANE_DEPLOYMENT_LINES@
} // namespace morvane::DeploymentValues
" @ONLY)

add_library(deployment_values INTERFACE)
target_include_directories(deployment_values INTERFACE ${CMAKE_BINARY_DIR}/include/deployment_values)
target_link_libraries(deployment_values INTERFACE Qt6::Core)
