# The shared C++ run-time, copied beside the programs: exceptions and strings cross the border
# between the library and its host, so both must use one run-time, and Windows looks for it there.
if(MINGW)
  set(MORVANTIS_RUNTIME_DLLS)
  foreach(name libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name}
      OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    if(NOT IS_ABSOLUTE "${path}")
      message(FATAL_ERROR "${CMAKE_CXX_COMPILER} has no shared run-time: ${name} is missing")
    endif()
    get_filename_component(path "${path}" REALPATH)
    list(APPEND MORVANTIS_RUNTIME_DLLS ${path})
    file(COPY ${path} DESTINATION ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
  endforeach()
endif()
