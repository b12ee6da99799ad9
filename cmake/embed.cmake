# cmake -D OUTPUT=FILE.cpp -D STYLE=FILE -D SCRIPTS=FILE|FILE -D D3=FILE -D LICENCE=FILE -P embed.cmake
# writes the definitions of src/html/embedded.h, with hashes as a Content-Security-Policy names them.

# The bytes of a hexadecimal text as base64; 32 bytes, as SHA-256 has.
function(to_base64 hex result)
  set(letters ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/)
  set(text)
  string(APPEND hex 00) # fills up the last three bytes
  foreach(at RANGE 0 60 6)
    string(SUBSTRING ${hex} ${at} 6 three)
    foreach(shift 18 12 6 0)
      math(EXPR letter "(0x${three} >> ${shift}) & 63")
      string(SUBSTRING ${letters} ${letter} 1 letter)
      string(APPEND text ${letter})
    endforeach()
  endforeach()
  string(REGEX REPLACE ".$" "=" text ${text})
  set(${result} ${text} PARENT_SCOPE)
endfunction()

# Defines `name` with this text, which has to stand between its tags as it is.
function(define name text)
  string(TOLOWER "${text}" small)
  if(small MATCHES "</(script|style)" OR small MATCHES "<!--")
    message(FATAL_ERROR "${name} holds a tag that ends it")
  endif()
  if(text MATCHES "\\)quarl\"")
    message(FATAL_ERROR "${name} holds the end of a raw string")
  endif()
  string(SHA256 hash "${text}")
  to_base64(${hash} hash)
  file(APPEND ${OUTPUT} "const Embedded ${name} = {R\"quarl(${text})quarl\", \"sha256-${hash}\"};\n")
endfunction()

file(READ ${STYLE} style)
file(READ ${D3} drawing)
file(READ ${LICENCE} licence)
string(REPLACE "|" ";" SCRIPTS "${SCRIPTS}")
# With scripts at hand, tables wait for these before they are laid out.
set(first "{ const list = document.documentElement.classList
list.add(\"js\")
addEventListener(\"load\", () => list.add(\"drawn\")) }
")
set(scripts)
foreach(file ${SCRIPTS})
  file(READ ${file} script)
  string(APPEND scripts "\n${script}")
endforeach()
# Comments of whole lines and what is in front of lines: a third of the script's size.
string(REGEX REPLACE "\n[ \n]*(//[^\n]*\n[ \n]*)*" "\n" scripts "${scripts}")

file(WRITE ${OUTPUT} "#include \"html/embedded.h\"\n\nnamespace quarl::html\n{\n\n")
define(Style "${style}")
define(Drawing "/*!\n${licence}*/\n${drawing}\n${first}")
define(Script "${scripts}")
file(APPEND ${OUTPUT} "\n} // namespace quarl::html\n")
