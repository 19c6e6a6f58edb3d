# Deployment values: each deployment/<name>.json is checked here and becomes an object that a program is linked with.
#
# Each value has a line at the end of this file: its key, its kind, and OPTIONAL when a deployment may lack it.
# Code reads it as DeploymentValues::<key> from "deployment/DeploymentValues.h" by linking `deployment_values`: a
# QLatin1StringView, empty where an optional value is absent, there before any other static object. The header is the
# same in all deployments, so nothing is compiled twice: a program takes the values of the deployment that its
# property MORVANE_DEPLOYMENT names, or those of the cache variable.
#
#   DIGEST   64 lower-case hexadecimal characters
#   URL      an https address; in development an http one of this machine, with its port
#   TEXT     any text without control characters, quotes or backslashes
#   ARRAY    a JSON array, given to the code as its text
#   KEYS     a JSON array of base64 texts of 32 bytes each, given to the code as its text

set(MORVANE_DEPLOYMENT production CACHE STRING "Deployment that programs are linked with: deployment/<name>.json")
if(MORVANE_DEPLOYMENT STREQUAL "development")
    message(FATAL_ERROR "The development deployment has a program of its own, morvane-development.")
endif()

set(MORVANE_DEPLOYMENT_KEYS)

# deployment_value(key kind [OPTIONAL])
macro(deployment_value key kind)
    list(APPEND MORVANE_DEPLOYMENT_KEYS ${key})
    set(MORVANE_DEPLOYMENT_KIND_${key} ${kind})
    set(MORVANE_DEPLOYMENT_MAY_LACK_${key} "${ARGN}")
endmacro()

# The object `deployment_values_<name>`.
function(add_deployment name)
    set(file ${CMAKE_SOURCE_DIR}/deployment/${name}.json)
    if(NOT EXISTS ${file})
        message(FATAL_ERROR "There is no deployment/${name}.json.")
    endif()
    set_property(DIRECTORY ${CMAKE_SOURCE_DIR} APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
    file(READ ${file} json)
    set(lines "constinit const QLatin1StringView deploymentName{\"${name}\"};\n")
    foreach(key IN LISTS MORVANE_DEPLOYMENT_KEYS)
        _deployment_read(${key} text)
        string(APPEND lines "constinit const QLatin1StringView ${key}{R\"json(${text})json\"};\n")
    endforeach()
    _deployment_refuse_unknown_keys()
    _deployment_report_incomplete_servers()
    set(source ${CMAKE_BINARY_DIR}/deployment/${name}.cpp)
    file(CONFIGURE OUTPUT ${source} @ONLY CONTENT
"#include \"deployment/DeploymentValues.h\"

// Written by the build from deployment/@name@.json.
namespace morvane::DeploymentValues {

@lines@
} // namespace morvane::DeploymentValues
")
    add_library(deployment_values_${name} OBJECT ${source})
    target_include_directories(deployment_values_${name} PRIVATE ${CMAKE_BINARY_DIR}/include/deployment_values)
    target_link_libraries(deployment_values_${name} PRIVATE Qt6::Core morvane_options)
endfunction()

# Of the deployment `name`, as the helpers below, which read it from `json`.
function(_deployment_read key result)
    string(JSON type ERROR_VARIABLE missing TYPE "${json}" ${key})
    if(missing AND MORVANE_DEPLOYMENT_MAY_LACK_${key} STREQUAL "OPTIONAL")
        set(${result} "" PARENT_SCOPE)
        return()
    endif()
    set(kind ${MORVANE_DEPLOYMENT_KIND_${key}})
    set(expected STRING)
    if(kind STREQUAL "ARRAY" OR kind STREQUAL "KEYS")
        set(expected ARRAY)
    endif()
    set(good FALSE)
    if(NOT missing AND type STREQUAL expected)
        string(JSON text GET "${json}" ${key})
        _deployment_check(${kind} "${text}" good)
    endif()
    if(NOT good)
        message(FATAL_ERROR "deployment/${name}.json: \"${key}\" is no ${kind}.")
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
        if(name STREQUAL "development")
            if(text MATCHES "^http://(127\\.0\\.0\\.1|localhost):[0-9]+(/[^\" ]*)?$")
                set(good TRUE)
            endif()
        elseif(text MATCHES "^https://[^\" ]+$")
            set(good TRUE)
        endif()
    elseif(kind STREQUAL "TEXT")
        if(NOT text MATCHES "[\"\\\\\n\r\t]")
            set(good TRUE)
        endif()
    elseif(kind STREQUAL "ARRAY")
        set(good TRUE)
    elseif(kind STREQUAL "KEYS")
        _deployment_check_keys("${text}" good)
    else()
        message(FATAL_ERROR "There is no kind of deployment value named ${kind}.")
    endif()
    set(${result} ${good} PARENT_SCOPE)
endfunction()

function(_deployment_check_keys json result)
    set(${result} TRUE PARENT_SCOPE)
    string(JSON count LENGTH "${json}")
    set(index 0)
    while(index LESS count)
        string(JSON type TYPE "${json}" ${index})
        string(JSON text GET "${json}" ${index})
        string(LENGTH "${text}" length)
        # 43 characters are two bits more than 32 bytes need, which are zero.
        if(NOT (type STREQUAL "STRING" AND length EQUAL 44 AND text MATCHES "^[A-Za-z0-9+/]+[AEIMQUYcgkosw048]=$"))
            set(${result} FALSE PARENT_SCOPE)
        endif()
        math(EXPR index "${index} + 1")
    endwhile()
endfunction()

# A key that no line below names is a slip of the pen, and would be ignored in silence.
function(_deployment_refuse_unknown_keys)
    string(JSON count LENGTH "${json}")
    math(EXPR last "${count} - 1")
    foreach(i RANGE ${last})
        string(JSON key MEMBER "${json}" ${i})
        if(NOT key IN_LIST MORVANE_DEPLOYMENT_KEYS)
            message(FATAL_ERROR "deployment/${name}.json: \"${key}\" is not a known value.")
        endif()
    endforeach()
endfunction()

# An accepted server counts only when all of it is known; say which ones don't, and why.
function(_deployment_report_incomplete_servers)
    string(JSON count LENGTH "${json}" acceptedServers)
    set(index 0)
    while(index LESS count)
        string(JSON label ERROR_VARIABLE unnamed GET "${json}" acceptedServers ${index} label)
        foreach(key IN ITEMS mrtd rtmr0 rtmr1 rtmr2)
            string(JSON value ERROR_VARIABLE missing GET "${json}" acceptedServers ${index} ${key})
            if(missing)
                message(STATUS "${name}: accepted server \"${label}\" has no known ${key}: this build accepts no server through it.")
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
deployment_value(listSigningKeys KEYS OPTIONAL)
deployment_value(privateCloudURL URL OPTIONAL)
deployment_value(hardwareProofPage URL OPTIONAL)
deployment_value(searchEndpoint URL OPTIONAL)
deployment_value(localRuntimeVersion TEXT)
deployment_value(localRuntimeReleases URL)
deployment_value(localRuntimeArchives ARRAY)

add_deployment(${MORVANE_DEPLOYMENT})
add_deployment(development)

set(lines)
foreach(key IN ITEMS deploymentName ${MORVANE_DEPLOYMENT_KEYS})
    string(APPEND lines "extern const QLatin1StringView ${key};\n")
endforeach()
file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/include/deployment_values/deployment/DeploymentValues.h @ONLY CONTENT
"#pragma once

#include <QLatin1StringView>

// Written by the build. The values are those of the deployment that the program is linked with.
namespace morvane::DeploymentValues {

@lines@
} // namespace morvane::DeploymentValues
")

# Layers see the header; the object goes to each program once, whatever layers it has.
set(deployment $<TARGET_PROPERTY:MORVANE_DEPLOYMENT>)
set(deployment $<IF:$<BOOL:${deployment}>,${deployment},${MORVANE_DEPLOYMENT}>)
add_library(deployment_values INTERFACE)
target_include_directories(deployment_values INTERFACE ${CMAKE_BINARY_DIR}/include/deployment_values)
target_link_libraries(deployment_values INTERFACE Qt6::Core $<TARGET_OBJECTS:deployment_values_${deployment}>)
