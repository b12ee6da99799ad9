# What pages of quarl-html bring along: style, scripts and D3 become constants of the program.

# D3 as Debian's node-d3 installs it.
find_file(D3_SCRIPT d3.min.js PATHS /usr/share/nodejs/d3/dist NO_DEFAULT_PATH)
if(NOT D3_SCRIPT)
  message(FATAL_ERROR "quarl-html needs D3: /usr/share/nodejs/d3/dist/d3.min.js of Debian's package "
                      "node-d3, or another place, given as -DD3_SCRIPT=.../d3.min.js")
endif()

# The page's own scripts, in the order in which they run.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS src/html/order.txt)
file(STRINGS src/html/order.txt html_scripts)
list(TRANSFORM html_scripts PREPEND ${CMAKE_SOURCE_DIR}/src/html/)
set(html_style ${CMAKE_SOURCE_DIR}/src/html/page.css)
set(d3_licence ${CMAKE_SOURCE_DIR}/src/html/d3-licence.txt)

set(html_embedded ${CMAKE_BINARY_DIR}/html/embedded.cpp)
list(JOIN html_scripts "|" joined_scripts)
add_custom_command(OUTPUT ${html_embedded}
                   COMMAND ${CMAKE_COMMAND} -D OUTPUT=${html_embedded} -D STYLE=${html_style}
                           -D "SCRIPTS=${joined_scripts}" -D D3=${D3_SCRIPT} -D LICENCE=${d3_licence}
                           -P ${CMAKE_SOURCE_DIR}/cmake/embed.cmake
                   DEPENDS ${html_style} ${html_scripts} ${D3_SCRIPT} ${d3_licence}
                           ${CMAKE_SOURCE_DIR}/cmake/embed.cmake
                   VERBATIM)
# No compiler here has the limit that the standard lets them have.
set_source_files_properties(${html_embedded} PROPERTIES COMPILE_OPTIONS -Wno-overlength-strings)

# What is installed as the copyright of programs that pages come from.
file(READ ${CMAKE_SOURCE_DIR}/LICENSE own_licence)
file(READ ${d3_licence} licence_of_d3)
file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/copyright @ONLY
     CONTENT "@own_licence@\n\nThe pages that quarl-html writes contain\n\n@licence_of_d3@\n\nand coastlines of Natural Earth, which are in the public domain, as the package world-atlas 2.0.2 \
(ISC, Copyright 2013-2019 Michael Bostock) packs them.\n")
