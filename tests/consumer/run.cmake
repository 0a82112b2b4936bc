# Installs the library into a scratch tree, moves the tree, and has the consumer project configured,
# built and run against it, by the CMake package and, where PKG_CONFIG is given, by pkg-config.
#
# needs: BUILD (the library's build tree), WORK (scratch folder), GENERATOR, CXX, and, for a cross
# build, TOOLCHAIN and EMULATOR
function(run)
  execute_process(COMMAND ${ARGV} RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    list(JOIN ARGV " " command)
    message(FATAL_ERROR "ended with ${result}: ${command}")
  endif()
endfunction()

file(REMOVE_RECURSE ${WORK})
run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${WORK}/first)
file(RENAME ${WORK}/first ${WORK}/installed)

set(options -G ${GENERATOR} -DCMAKE_PREFIX_PATH=${WORK}/installed -DCMAKE_CXX_COMPILER_LAUNCHER=${LAUNCHER})
if(TOOLCHAIN)
  # The installed tree stands outside the cross compiler's own.
  list(APPEND options --toolchain ${TOOLCHAIN} -DCMAKE_FIND_ROOT_PATH=${WORK}/installed)
else()
  list(APPEND options -DCMAKE_CXX_COMPILER=${CXX})
endif()
run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR} -B ${WORK}/build ${options})
run(${CMAKE_COMMAND} --build ${WORK}/build)
if(TOOLCHAIN)
  run(${EMULATOR} ${WORK}/build/consumer.exe)
else()
  run(${WORK}/build/consumer)
endif()

if(PKG_CONFIG)
  file(GLOB_RECURSE file ${WORK}/installed/morvantis.pc)
  cmake_path(GET file PARENT_PATH folder)
  set(ENV{PKG_CONFIG_PATH} ${folder})
  execute_process(COMMAND ${PKG_CONFIG} --cflags --libs morvantis
    OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  execute_process(COMMAND ${PKG_CONFIG} --variable=libdir morvantis
    OUTPUT_VARIABLE libraries OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  separate_arguments(flags)
  run(${CXX} -std=c++20 ${CMAKE_CURRENT_LIST_DIR}/consumer.cpp -o ${WORK}/by_pkg_config ${flags}
    -Wl,-rpath,${libraries})
  run(${WORK}/by_pkg_config)
endif()
