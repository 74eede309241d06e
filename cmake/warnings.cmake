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

# The C++ library becomes a part of what is linked: to look up its thousands of symbols would be a sixth of every start.
# None of them is shown to other libraries, which may bring their own.
add_library(kelvo_own_runtime INTERFACE)
if(NOT KELVO_SANITIZE) # the sanitizers look for it
  target_link_options(kelvo_own_runtime INTERFACE -static-libstdc++ -static-libgcc LINKER:--exclude-libs,ALL)
endif()

if(KELVO_SANITIZE)
  # -fno-sanitize-recover: an undefined operation ends the run, so that no test passes over one.
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()
