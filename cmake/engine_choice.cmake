# kelvo_engine: the library behind the 33 operations that the program is linked with. Any of them can be replaced at
# run time; this only settles what the linker sees.
#   KELVO_ENGINE_LIBRARY   an engine made elsewhere, where named
#   the default engine     where it is built
#   the scripted engine    where only the program and its tests are built (the x86 preset)
# KELVO_RUNTIME_PATH is where the program looks for it: a library made elsewhere is named by its own folder.
if(KELVO_ENGINE_LIBRARY)
  add_library(kelvo_engine SHARED IMPORTED GLOBAL)
  # IMPORTED_NO_SONAME: should that library bear no soname, the program still asks for the plain file name, not for a path.
  set_target_properties(kelvo_engine PROPERTIES IMPORTED_LOCATION "${KELVO_ENGINE_LIBRARY}"
                                                IMPORTED_NO_SONAME TRUE)
  get_filename_component(KELVO_RUNTIME_PATH "${KELVO_ENGINE_LIBRARY}" DIRECTORY)
elseif(TARGET kelvo)
  add_library(kelvo_engine ALIAS kelvo)
elseif(TARGET scripted_engine)
  add_library(kelvo_engine ALIAS scripted_engine)
  set(KELVO_RUNTIME_PATH "${PROJECT_BINARY_DIR}/tests/support")
else()
  message(FATAL_ERROR "No engine to link with: set KELVO_ENGINE=ON, or KELVO_ENGINE_LIBRARY to a libKelvo.so")
endif()
