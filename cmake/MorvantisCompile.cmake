# How every target of this project is compiled.

add_library(morvantis_compile INTERFACE)
target_compile_features(morvantis_compile INTERFACE cxx_std_20)
# Contracted multiply-adds change results between machines; see docs/architecture.md.
target_compile_options(morvantis_compile INTERFACE
  -ffp-contract=off
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion $<$<COMPILE_LANGUAGE:CXX>:-Woverloaded-virtual>
  -Wcast-align -Wundef -Wformat=2 -Werror
  -ffile-prefix-map=${PROJECT_SOURCE_DIR}/=)
set_property(TARGET morvantis_compile PROPERTY INTERFACE_POSITION_INDEPENDENT_CODE ON)

set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
# All programs and libraries stand together, so that Windows finds the DLLs beside the programs.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)

# For code whose speed doesn't matter: compiled without optimisation it takes a third of the time.
set(MORVANTIS_UNOPTIMIZED $<$<CONFIG:RelWithDebInfo>:-O0>)

# Sanitizers and coverage instrument everything in the tree, third-party code included.
if(MORVANTIS_SANITIZE)
  add_compile_options(-fsanitize=${MORVANTIS_SANITIZE} -fno-omit-frame-pointer
    -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${MORVANTIS_SANITIZE})
endif()
if(MORVANTIS_BUILD_FUZZERS)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
if(MORVANTIS_COVERAGE)
  add_compile_options(-fprofile-instr-generate -fcoverage-mapping)
  add_link_options(-fprofile-instr-generate)
endif()
