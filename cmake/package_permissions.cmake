# Run by CPack before it makes the packages: folders that everybody can read, whatever the umask.
file(CHMOD_RECURSE ${CPACK_TEMPORARY_INSTALL_DIRECTORY}
     DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE
                           GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
