# Where the program finds libKelvo.so at run time: a RUNPATH, which LD_LIBRARY_PATH wins over (an RPATH would win over
# it), so that another engine can take the default one's place without a rebuild.
#
# The build tree is laid out like the installation (the program's folder beside ${CMAKE_INSTALL_LIBDIR}), so that one path
# serves both. A path that CMake would have to exchange at installation is padded with colons, and the loader takes an
# empty entry for the current directory: a library lying there would be loaded.
add_link_options(LINKER:--enable-new-dtags)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib")

file(RELATIVE_PATH KELVO_BIN_TO_LIB "${CMAKE_INSTALL_FULL_BINDIR}" "${CMAKE_INSTALL_FULL_LIBDIR}")
set(KELVO_RUNTIME_PATH "$ORIGIN/../lib")
if(NOT KELVO_BIN_TO_LIB STREQUAL "../lib")
  list(APPEND KELVO_RUNTIME_PATH "$ORIGIN/${KELVO_BIN_TO_LIB}")
endif()
