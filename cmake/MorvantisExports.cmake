# What the library exports: what carries MORVANTIS_API, and LZ4's functions under their own names,
# which exports/lz4-functions.txt lists for both linkers.

# morvantis_export_lz4(<target>): adds the generated version script (Linux) or module definition
# (Windows) to the target.
function(morvantis_export_lz4 target)
  set(list ${PROJECT_SOURCE_DIR}/exports/lz4-functions.txt)
  file(STRINGS ${list} names)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${list})
  if(WIN32)
    set(file ${CMAKE_CURRENT_BINARY_DIR}/lz4.def)
    set(text "EXPORTS\n")
    foreach(name IN LISTS names)
      string(APPEND text "  ${name}\n")
    endforeach()
    file(CONFIGURE OUTPUT ${file} CONTENT "${text}" @ONLY)
    target_sources(${target} PRIVATE ${file})
  else()
    set(file ${CMAKE_CURRENT_BINARY_DIR}/exports.map)
    set(text "{\n  global:\n")
    foreach(name IN LISTS names)
      string(APPEND text "    ${name};\n")
    endforeach()
    # Templates of the C++ library would leak with the default visibility that they declare. What
    # the script does not name keeps its mark.
    string(APPEND text "  local:\n    LZ4_*;\n")
    foreach(prefix _ZNSt _ZNKSt _ZSt _ZTISt _ZTSSt _ZTVSt _ZTTSt _ZTINSt _ZTSNSt _ZTVNSt
        _ZGVNSt _ZNVSt _ZNVKSt _ZZNSt _ZZNKSt _ZN9__gnu_cxx _ZNK9__gnu_cxx)
      string(APPEND text "    ${prefix}*;\n")
    endforeach()
    string(APPEND text "};\n")
    file(CONFIGURE OUTPUT ${file} CONTENT "${text}" @ONLY)
    target_link_options(${target} PRIVATE LINKER:--version-script=${file})
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${file})
    # A sanitizer's run-time is found in the program only.
    if(NOT MORVANTIS_SANITIZE)
      target_link_options(${target} PRIVATE LINKER:--no-undefined)
    endif()
  endif()
endfunction()
