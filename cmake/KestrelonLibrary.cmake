# One static library per folder under src/. Includes are written from src/,
# e.g. #include "common/ini_document.h", so a folder's dependencies stay visible.
function(kestrelon_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPS" ${ARGN})
  add_library(kestrelon_${name} STATIC ${ARG_SOURCES})
  target_include_directories(kestrelon_${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(kestrelon_${name} PUBLIC ${ARG_DEPS})
  add_library(kestrelon::${name} ALIAS kestrelon_${name})
endfunction()
