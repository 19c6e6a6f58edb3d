# Layers: one static library for a folder of src/, which sees only the folders it names.
#
#   add_layer([MOC] SOURCES … DEPENDS … USES … LIBS … PRIVATE_LIBS …)
#
# Called in the folder's CMakeLists.txt. The target is named after the folder, with "_" for "/":
# src/ai/contract is `ai_contract`, and its headers are included as "ai/contract/…".
#
#   MOC           it has classes with Q_OBJECT or Q_GADGET
#   DEPENDS       layers whose headers our headers include
#   USES          layers that only our .cpp files include
#   LIBS          libraries that our headers need
#   PRIVATE_LIBS  libraries that only our .cpp files need
#
# A layer publishes one include root holding a link to its own folder, and src/ itself is on no include
# path: including a folder that isn't declared doesn't compile. A layer named before it exists is refused,
# so a cycle can't be written.
function(add_layer)
    cmake_parse_arguments(LAYER "MOC" "" "SOURCES;DEPENDS;USES;LIBS;PRIVATE_LIBS" ${ARGN})
    file(RELATIVE_PATH folder ${CMAKE_SOURCE_DIR}/src ${CMAKE_CURRENT_SOURCE_DIR})
    string(REPLACE "/" "_" name ${folder})

    foreach(other IN LISTS LAYER_DEPENDS LAYER_USES)
        if(NOT TARGET ${other})
            message(FATAL_ERROR "Layer ${name} names ${other}, which stands on a higher floor or doesn't exist.")
        endif()
    endforeach()

    set(root ${CMAKE_BINARY_DIR}/include/${name})
    cmake_path(GET folder PARENT_PATH parent)
    file(MAKE_DIRECTORY ${root}/${parent})
    file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR} ${root}/${folder} SYMBOLIC)

    add_library(${name} STATIC ${LAYER_SOURCES})
    set_target_properties(${name} PROPERTIES AUTOMOC ${LAYER_MOC})
    target_include_directories(${name} PUBLIC ${root})
    target_link_libraries(${name}
        PUBLIC ${LAYER_DEPENDS} ${LAYER_LIBS}
        PRIVATE ${LAYER_USES} ${LAYER_PRIVATE_LIBS} morvane_options)

    # Rooms that don't stand on async see nothing that waits, not even through precompiled headers.
    set(headers values)
    foreach(other IN ITEMS ${name} ${LAYER_DEPENDS} ${LAYER_USES})
        get_target_property(waits ${other} MORVANE_MAY_WAIT)
        if(waits OR other STREQUAL "async")
            set(headers tasks)
            set_target_properties(${name} PROPERTIES MORVANE_MAY_WAIT ON)
        endif()
    endforeach()
    precompile(${headers} ${name})
endfunction()
