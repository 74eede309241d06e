# Where the program finds libKelvo.so at run time: a RUNPATH, which LD_LIBRARY_PATH wins over (an RPATH would win over
# it), so that another engine can take the default one's place without a rebuild.
add_link_options(LINKER:--enable-new-dtags)
file(RELATIVE_PATH KELVO_BIN_TO_LIB "${CMAKE_INSTALL_FULL_BINDIR}" "${CMAKE_INSTALL_FULL_LIBDIR}")
set(CMAKE_INSTALL_RPATH "$ORIGIN/${KELVO_BIN_TO_LIB}")
# In the build tree CMake fills a path shorter than the installed one up with colons, and an empty entry means the current
# directory: a library put there would be loaded. A second entry keeps it longer.
set(CMAKE_BUILD_RPATH "${CMAKE_INSTALL_FULL_LIBDIR}")
