# Folders below the prefix. Include this before any package is searched for: some packages set the same variables.

if(EXISTS /etc/debian_version AND CMAKE_LIBRARY_ARCHITECTURE)
  set(CMAKE_INSTALL_LIBDIR lib/${CMAKE_LIBRARY_ARCHITECTURE} CACHE PATH "Libraries")
endif()
set(CMAKE_INSTALL_DOCDIR share/doc/krohost CACHE PATH "Documents")
include(GNUInstallDirs)
