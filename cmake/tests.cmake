# How a test is added: one line in tests/CMakeLists.txt.
#   add_kelvo_test(name sources...)        GoogleTest cases, over the program's core and the scripted engine
#   add_kelvo_pytests(label files...)      Python files, a test each, over the built program
set(KELVO_GOOGLETEST_DIR "/usr/src/googletest" CACHE PATH "Sources of GoogleTest")
set(KELVO_PYTHON "/usr/bin/python3" CACHE FILEPATH "Python with pytest and pexpect")

# Built along with the tests, as it must be of their word size and sanitized as they are.
set(BUILD_GMOCK OFF)
set(INSTALL_GTEST OFF)
add_subdirectory("${KELVO_GOOGLETEST_DIR}" "${PROJECT_BINARY_DIR}/googletest" EXCLUDE_FROM_ALL)
include(GoogleTest)

function(add_kelvo_test name)
  add_executable(${name} ${ARGN})
  target_link_libraries(${name} PRIVATE kelvo_flags kelvocli_core scripted_engine_objects
                                        GTest::gtest_main)
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 60)
endfunction()

# What the Python tests are told of the build, as environment variables.
set(kelvo_built_engines $<TARGET_FILE:scripted_engine>)
if(TARGET kelvo)
  string(APPEND kelvo_built_engines ":$<TARGET_FILE:kelvo>")
endif()
set(kelvo_pytest_environment
    KELVO_PROGRAM=$<TARGET_FILE:kelvocli>
    KELVO_SCRIPTED_ENGINE=$<TARGET_FILE:scripted_engine>
    KELVO_BUILT_ENGINES=${kelvo_built_engines}
    KELVO_FAULTS=$<TARGET_FILE:faults>)

function(add_kelvo_pytests label)
  foreach(file ${ARGN})
    cmake_path(GET file STEM LAST_ONLY stem)
    add_test(NAME ${label}.${stem}
             COMMAND "${KELVO_PYTHON}" -B -m pytest "${CMAKE_CURRENT_SOURCE_DIR}/${file}")
    set_tests_properties(${label}.${stem} PROPERTIES TIMEOUT 300 ENVIRONMENT
                                                     "${kelvo_pytest_environment}")
  endforeach()
endfunction()
