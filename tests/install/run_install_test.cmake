file(REMOVE_RECURSE ${PREFIX} ${CONSUMER_BUILD})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${PREFIX}
                RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "cmake --install failed: ${rc}")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} -S ${CONSUMER_SOURCE} -B ${CONSUMER_BUILD}
                        -DCMAKE_PREFIX_PATH=${PREFIX} "-DCMAKE_CXX_FLAGS=${CXX_FLAGS}"
                        "-DCMAKE_EXE_LINKER_FLAGS=${CXX_FLAGS}"
                RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "configuring the consumer failed: ${rc}")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} --build ${CONSUMER_BUILD} RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "building the consumer failed: ${rc}")
endif()
execute_process(COMMAND ${CONSUMER_BUILD}/consumer ${CONSUMER_BUILD}/consumer.zmf
                RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "the consumer failed: ${rc}")
endif()

# The same program built without CMake, through the installed pkg-config file.
find_program(PKG_CONFIG pkg-config)
find_program(CXX_COMPILER NAMES c++ g++)
if(PKG_CONFIG AND CXX_COMPILER)
  file(GLOB_RECURSE pc_files ${PREFIX}/*/tessmeta.pc)
  list(GET pc_files 0 pc_file)
  get_filename_component(pc_dir ${pc_file} DIRECTORY)
  set(ENV{PKG_CONFIG_PATH} ${pc_dir})
  execute_process(COMMAND ${PKG_CONFIG} --cflags --libs tessmeta
                  OUTPUT_VARIABLE pc_flags OUTPUT_STRIP_TRAILING_WHITESPACE RESULT_VARIABLE rc)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "pkg-config tessmeta failed: ${rc}")
  endif()
  separate_arguments(pc_flags UNIX_COMMAND "${pc_flags}")
  separate_arguments(sanitize UNIX_COMMAND "${CXX_FLAGS}")
  set(pc_build ${CONSUMER_BUILD}/pkg-config)
  file(MAKE_DIRECTORY ${pc_build})
  execute_process(COMMAND ${CXX_COMPILER} ${sanitize} ${CONSUMER_SOURCE}/main.cpp ${pc_flags}
                          -o ${pc_build}/consumer RESULT_VARIABLE rc)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "building the consumer with pkg-config failed: ${rc}")
  endif()
  file(COPY ${PREFIX}/share/tessmeta/SysMacros DESTINATION ${pc_build})
  set(ENV{LD_LIBRARY_PATH} ${pc_dir}/..)  # a shared build: pkg-config gives no run path
  execute_process(COMMAND ${pc_build}/consumer ${pc_build}/consumer.zmf RESULT_VARIABLE rc)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "the consumer built with pkg-config failed: ${rc}")
  endif()
endif()
