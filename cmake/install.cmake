# What is installed and where, below any prefix, in the same layout as a package of the distribution.

set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON) # tests need not be built for it

set(library_folder ${CMAKE_INSTALL_LIBDIR}/krohost)
file(RELATIVE_PATH library_from_tool /${CMAKE_INSTALL_BINDIR} /${library_folder})
target_compile_definitions(krohost_cli PRIVATE KROHOST_ADDON_FOLDER="${library_from_tool}/addons")

# The build tree has its libraries where an installed krohost finds them, so that CMake need not change the search path.
# To make room for a change it would add empty entries, each of which means the current folder.
cmake_path(SET built_library_folder NORMALIZE "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${library_from_tool}")
set_target_properties(krohost_library krohost_hdf PROPERTIES LIBRARY_OUTPUT_DIRECTORY ${built_library_folder})
set_target_properties(krohost PROPERTIES INSTALL_RPATH "$ORIGIN/${library_from_tool}" BUILD_WITH_INSTALL_RPATH ON)
set_target_properties(krohost_hdf PROPERTIES INSTALL_RPATH "$ORIGIN" BUILD_WITH_INSTALL_RPATH ON)

install(TARGETS krohost krohost_library RUNTIME LIBRARY DESTINATION ${library_folder})
install(TARGETS krohost_hdf LIBRARY DESTINATION ${library_folder})
install(TARGETS vtk-data-loader LIBRARY DESTINATION ${library_folder}/addons)
install(FILES interface/kro.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/krohost)
install(FILES packaging/copyright DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR} FILES_MATCHING PATTERN *.md PATTERN *.json)
install(FILES samples/wing.vtu DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples)

# The manual page and the completions come from the tool's own description of its options.
set(pages ${CMAKE_BINARY_DIR}/share)
set(page_files ${pages}/krohost.1.gz ${pages}/krohost ${pages}/_krohost ${pages}/krohost.fish ${pages}/changelog.gz)
set(pages_by_default ALL)
if(KRO_SANITIZE)
  set(pages_by_default)
endif()
add_custom_command(OUTPUT ${page_files}
  COMMAND ${PROJECT_SOURCE_DIR}/packaging/make_pages $<TARGET_FILE:krohost> ${pages}
  DEPENDS krohost vtk-data-loader packaging/make_pages packaging/changelog
  VERBATIM)
add_custom_target(krohost_pages ${pages_by_default} DEPENDS ${page_files})
install(FILES ${pages}/krohost.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${pages}/krohost DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
install(FILES ${pages}/_krohost DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions)
install(FILES ${pages}/krohost.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
install(FILES ${pages}/changelog.gz DESTINATION ${CMAKE_INSTALL_DOCDIR})
