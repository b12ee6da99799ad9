# The programs, each named once. One of the name quarl-NAME has its main in src/programs/quarl_NAME.cpp, its manual
# in doc/quarl-NAME.1, and its completions in completion/quarl-NAME.bash and completion/_quarl-NAME.
set(QUARL_PROGRAMS quarl quarl-json quarl-check quarl-html quarl-mseed quarl-stationxml quarl-db)

list(TRANSFORM QUARL_PROGRAMS REPLACE - _ OUTPUT_VARIABLE QUARL_TARGETS)
list(TRANSFORM QUARL_TARGETS REPLACE "(.+)" "${CMAKE_SOURCE_DIR}/src/programs/\\1.cpp"
     OUTPUT_VARIABLE QUARL_MAINS)

# Makes a target of each program, with _ for - in its name.
function(quarl_add_programs)
  foreach(program target main IN ZIP_LISTS QUARL_PROGRAMS QUARL_TARGETS QUARL_MAINS)
    add_executable(${target} ${main})
    if(program STREQUAL quarl)
      target_link_libraries(${target} PRIVATE quarl_listing)
    else()
      target_link_libraries(${target} PRIVATE quarl_tools)
    endif()
    target_precompile_headers(${target} REUSE_FROM quarl_precompiled)
    # Half of the start-up time of a small C++ program is the loading of the C++ library.
    if(NOT QUARL_SANITIZE)
      target_link_options(${target} PRIVATE -static-libstdc++ -static-libgcc)
    endif()
    # The build tree is laid out as the installed one: programs find ../share/quarl/quarl.pf.
    set_target_properties(${target} PROPERTIES
      OUTPUT_NAME ${program} RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
  endforeach()
endfunction()
