# The only place where compiler flags are set. Every target of ours links kelvo_flags, privately.
add_library(kelvo_flags INTERFACE)
target_compile_options(
  kelvo_flags
  INTERFACE -Wall
            -Wextra
            -Wpedantic
            -Wshadow
            -Wconversion
            -Werror
            $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast>
            $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor>
            # GCC 12 takes its own std::string for overlapping copies when it optimises "text" + string (its bug 105651).
            $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)

# For the loops over rows, which call the engine a few times for each: without a stub in between. The price is that all
# that is called is looked up as the program starts.
add_library(kelvo_direct_calls INTERFACE)
target_compile_options(kelvo_direct_calls INTERFACE -fno-plt)

if(KELVO_SANITIZE)
  # -fno-sanitize-recover: an undefined operation ends the run, so that no test passes over one.
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()
