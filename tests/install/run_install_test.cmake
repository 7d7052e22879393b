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
