# Folders below the prefix. To be included before any package is looked for, since some settle them too.

if(EXISTS /etc/debian_version AND CMAKE_LIBRARY_ARCHITECTURE)
  set(CMAKE_INSTALL_LIBDIR lib/${CMAKE_LIBRARY_ARCHITECTURE} CACHE PATH "Libraries")
endif()
set(CMAKE_INSTALL_DOCDIR share/doc/krohost CACHE PATH "Documents")
include(GNUInstallDirs)
