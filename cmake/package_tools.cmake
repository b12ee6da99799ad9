# Read by CPack before it makes a package. Without these it would make one that depends on nothing, or break off
# in the middle.
find_program(DPKG_SHLIBDEPS dpkg-shlibdeps)
find_program(FILE_EXECUTABLE file)
if(NOT DPKG_SHLIBDEPS OR NOT FILE_EXECUTABLE)
  message(FATAL_ERROR "To find out what the packages depend on needs dpkg-shlibdeps and file: "
                      "sudo apt-get install dpkg-dev file")
endif()
