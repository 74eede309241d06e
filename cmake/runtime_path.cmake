# Where the program finds libKelvo.so at run time: a RUNPATH, which LD_LIBRARY_PATH wins over (an RPATH would win over
# it), so that another engine can take the default one's place without a rebuild.
add_link_options(LINKER:--enable-new-dtags)
file(RELATIVE_PATH KELVO_BIN_TO_LIB "${CMAKE_INSTALL_FULL_BINDIR}" "${CMAKE_INSTALL_FULL_LIBDIR}")
set(CMAKE_INSTALL_RPATH "$ORIGIN/${KELVO_BIN_TO_LIB}")
