# zlog where it is installed, the stand-in of support/zlog otherwise.
#   TAVISYS_ZLOG=AUTO     link zlog when it is found
#   TAVISYS_ZLOG=SYSTEM   zlog must be there
#   TAVISYS_ZLOG=BUNDLED  the stand-in, whatever is installed
# Defines the target tavisys_zlog and, for the stand-in, zlog_sources, else zlog_library, the name to link.
set(TAVISYS_ZLOG AUTO CACHE STRING "Which zlog to use: AUTO, SYSTEM or BUNDLED")
set_property(CACHE TAVISYS_ZLOG PROPERTY STRINGS AUTO SYSTEM BUNDLED)
if(NOT TAVISYS_ZLOG MATCHES "^(AUTO|SYSTEM|BUNDLED)$")
  message(FATAL_ERROR "TAVISYS_ZLOG is \"${TAVISYS_ZLOG}\"; it takes AUTO, SYSTEM or BUNDLED")
endif()

add_library(tavisys_zlog INTERFACE)
set(zlog_sources)
set(zlog_library)
if(NOT TAVISYS_ZLOG STREQUAL "BUNDLED")
  find_path(ZLOG_INCLUDE_DIR zlog.h)
  find_library(ZLOG_LIBRARY zlog)
  mark_as_advanced(ZLOG_INCLUDE_DIR ZLOG_LIBRARY)
endif()
if(ZLOG_INCLUDE_DIR AND ZLOG_LIBRARY AND NOT TAVISYS_ZLOG STREQUAL "BUNDLED")
  message(STATUS "zlog: ${ZLOG_LIBRARY}")
  set(zlog_library zlog)
  target_include_directories(tavisys_zlog SYSTEM INTERFACE ${ZLOG_INCLUDE_DIR})
  target_link_libraries(tavisys_zlog INTERFACE ${ZLOG_LIBRARY})
elseif(TAVISYS_ZLOG STREQUAL "SYSTEM")
  message(FATAL_ERROR "TAVISYS_ZLOG=SYSTEM, but zlog.h or libzlog was not found")
else()
  message(STATUS "zlog: the stand-in of support/zlog")
  target_include_directories(tavisys_zlog INTERFACE ${PROJECT_SOURCE_DIR}/support/zlog)
  set(zlog_sources support/zlog/zlog.cpp)
endif()
