# Third-party code: found or fetched by the build, never copied into the tree.
# scripts/bootstrap.sh lays the source packages down where the presets point FetchContent.
include(FetchContent)

if(MORVANTIS_HEAP STREQUAL mimalloc)
  # It serves the library's heap alone and must take over nothing of the process.
  foreach(option MI_OVERRIDE MI_BUILD_SHARED MI_BUILD_OBJECT MI_BUILD_TESTS MI_WIN_REDIRECT)
    set(${option} OFF CACHE BOOL "" FORCE)
  endforeach()
  if(MORVANTIS_SANITIZE MATCHES thread)
    set(MI_DEBUG_TSAN ON CACHE BOOL "" FORCE)
  endif()
  FetchContent_Declare(mimalloc
    SOURCE_DIR ${PROJECT_SOURCE_DIR}/build/deps/mimalloc
    DOWNLOAD_COMMAND ${CMAKE_COMMAND} -E false)
  FetchContent_GetProperties(mimalloc)
  if(NOT mimalloc_POPULATED)
    FetchContent_Populate(mimalloc)
    add_subdirectory(${mimalloc_SOURCE_DIR} ${mimalloc_BINARY_DIR} EXCLUDE_FROM_ALL SYSTEM)
  endif()
  target_compile_options(mimalloc-static PRIVATE -w)
elseif(MORVANTIS_HEAP STREQUAL runtime AND WIN32)
  message(FATAL_ERROR "The C runtime behind the heap door is for POSIX systems")
elseif(NOT MORVANTIS_HEAP STREQUAL runtime)
  message(FATAL_ERROR "MORVANTIS_HEAP is mimalloc or runtime, not '${MORVANTIS_HEAP}'")
endif()

FetchContent_Declare(lz4
  SOURCE_DIR ${PROJECT_SOURCE_DIR}/build/deps/lz4
  DOWNLOAD_COMMAND ${CMAKE_COMMAND} -E false)
FetchContent_GetProperties(lz4)
if(NOT lz4_POPULATED)
  FetchContent_Populate(lz4)
endif()

find_package(EASTL QUIET)

# Symbol files of images on Linux: elfutils.
if(NOT WIN32)
  find_library(LIBDW_LIBRARY dw REQUIRED)
  find_library(LIBELF_LIBRARY elf REQUIRED)
  set(LIBDW_LIBRARIES ${LIBDW_LIBRARY} ${LIBELF_LIBRARY})
endif()
