# tessmeta_copy_sysmacros(<target> [SOURCE <dir>])
#
# The library reads its macro template files from the folder "SysMacros/" beside
# the module that holds it: the program that links it statically (or the shared
# object built from it). This copies the templates from <dir> (default:
# TESSMETA_SYSMACROS_DIR) into SysMacros/ beside the file <target> builds, and
# copies them again whenever a template changes.
function(tessmeta_copy_sysmacros target)
  cmake_parse_arguments(arg "" "SOURCE" "" ${ARGN})
  if(NOT arg_SOURCE)
    set(arg_SOURCE ${TESSMETA_SYSMACROS_DIR})
  endif()
  file(GLOB templates CONFIGURE_DEPENDS ${arg_SOURCE}/*.bas)
  if(NOT templates)
    message(FATAL_ERROR "tessmeta_copy_sysmacros: no .bas files in '${arg_SOURCE}'")
  endif()
  set(stamp ${CMAKE_CURRENT_BINARY_DIR}/${target}_sysmacros.stamp)
  add_custom_command(OUTPUT ${stamp}
    COMMAND ${CMAKE_COMMAND} -E make_directory $<TARGET_FILE_DIR:${target}>/SysMacros
    COMMAND ${CMAKE_COMMAND} -E copy_if_different ${templates}
            $<TARGET_FILE_DIR:${target}>/SysMacros
    COMMAND ${CMAKE_COMMAND} -E touch ${stamp}
    DEPENDS ${templates}
    COMMENT "Copying the macro templates beside ${target}"
    VERBATIM)
  add_custom_target(${target}_sysmacros DEPENDS ${stamp})
  add_dependencies(${target} ${target}_sysmacros)
endfunction()
