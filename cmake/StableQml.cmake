# Has stable_qml.py stand before Qt's compiler for QML in a release build, so that it gives the same bytes each time.
get_target_property(compiler Qt6::qmlcachegen IMPORTED_LOCATION_RELEASE)
set(wrapper ${CMAKE_BINARY_DIR}/qmlcachegen)
file(CONFIGURE OUTPUT ${wrapper} @ONLY CONTENT
"#!/bin/sh
exec '@CMAKE_SOURCE_DIR@/cmake/stable_qml.py' '@compiler@' \"$@\"
")
file(CHMOD ${wrapper} PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
set_target_properties(Qt6::qmlcachegen PROPERTIES IMPORTED_LOCATION_RELEASE ${wrapper})
