# The Debian package, which `kro package` makes.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME krohost)
set(CPACK_PACKAGE_CONTACT "krohost maintainers <maintainers@krohost.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "load simulation files through a data-loader add-on")
set(CPACK_PACKAGE_DESCRIPTION "A command-line host for data-loader add-ons, with an add-on that reads VTK XML
unstructured grids (.vtu, .vtm, .pvtu, .trix). It shows the zones, sections and
variables of files, and loads their values on demand.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${built_library_folder})
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
include(CPack)
