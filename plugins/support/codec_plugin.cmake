# kestrelon_codec_plugin(<Name> SOURCES ... [DEPS ...] BODY_FILE <file>)
#
# Builds the codec plug-in <Name>: a module library named <Name> plus the
# platform's plug-in suffix (.so, .dll, .dylib, as librarySuffix() gives it),
# placed in KESTRELON_CODEC_DIR with its body file copied beside it as
# <Name>.bdy. Only the plug-in's two exports are visible: its own code is built
# with hidden visibility and, where the linker allows, the static libraries it
# takes in keep their symbols to themselves.
if(WIN32)
  set(KESTRELON_PLUGIN_SUFFIX ".dll")
elseif(APPLE)
  set(KESTRELON_PLUGIN_SUFFIX ".dylib")
else()
  set(KESTRELON_PLUGIN_SUFFIX ".so")
endif()

function(kestrelon_codec_plugin name)
  cmake_parse_arguments(ARG "" "BODY_FILE" "SOURCES;DEPS" ${ARGN})
  add_library(${name} MODULE ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE kestrelon::reference_codec ${ARG_DEPS})
  set_target_properties(${name} PROPERTIES
    PREFIX ""
    OUTPUT_NAME ${name}
    SUFFIX ${KESTRELON_PLUGIN_SUFFIX}
    LIBRARY_OUTPUT_DIRECTORY ${KESTRELON_CODEC_DIR}
    RUNTIME_OUTPUT_DIRECTORY ${KESTRELON_CODEC_DIR}
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON)
  if(CMAKE_SYSTEM_NAME STREQUAL "Linux")
    target_link_options(${name} PRIVATE LINKER:--exclude-libs,ALL LINKER:--as-needed)
    # Sanitizer builds leave their runtime's symbols for the program to bring.
    if(NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize")
      target_link_options(${name} PRIVATE LINKER:--no-undefined)
    endif()
  endif()
  # Copied at configure time, and again whenever the source file changes.
  configure_file(${ARG_BODY_FILE} ${KESTRELON_CODEC_DIR}/${name}.bdy COPYONLY)
endfunction()
