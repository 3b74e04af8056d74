# Installs a text as distributions keep it, compressed, and the same bytes at each build.
find_program(KELVO_GZIP gzip REQUIRED)

function(kelvo_install_compressed text destination)
  cmake_parse_arguments(ARG "" "COMPONENT" "" ${ARGN})
  if(NOT ARG_COMPONENT)
    set(ARG_COMPONENT ${CMAKE_INSTALL_DEFAULT_COMPONENT_NAME})
  endif()
  get_filename_component(name ${text} NAME)
  set(source ${CMAKE_CURRENT_SOURCE_DIR}/${text})
  set(compressed ${CMAKE_CURRENT_BINARY_DIR}/${name}.gz)
  if(NOT TARGET ${name}-compressed)
    add_custom_command(
      OUTPUT ${compressed}
      COMMAND ${KELVO_GZIP} --best --no-name --stdout ${source} > ${compressed}
      DEPENDS ${source}
      VERBATIM)
    add_custom_target(${name}-compressed ALL DEPENDS ${compressed})
  endif()
  install(FILES ${compressed} DESTINATION ${destination} COMPONENT ${ARG_COMPONENT})
endfunction()
