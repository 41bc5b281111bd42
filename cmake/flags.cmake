# How the code is built, as three bundles: for everything, for what stands in src/, and for the linking of `morvik`.

# No contraction: a product and a sum round twice on every machine, so that results do not depend on the compiler.
add_library(morvik_build INTERFACE)
target_compile_options(morvik_build INTERFACE -ffp-contract=off)
if(MORVIK_CHECKING)
  target_compile_definitions(morvik_build INTERFACE MORVIK_CHECKING)
endif()

set(sanitizers ${MORVIK_SANITIZE})
if(MORVIK_FUZZ)
  set(sanitizers address,undefined,float-cast-overflow)
  target_compile_options(morvik_build INTERFACE -fsanitize=fuzzer-no-link)
endif()
if(sanitizers)
  # The sanitizers watch the system's heap; the own one would hide every block from them.
  target_compile_definitions(morvik_build INTERFACE MORVIK_SYSTEM_HEAP)
  target_compile_options(morvik_build INTERFACE -fsanitize=${sanitizers} -fno-sanitize-recover=all
                         -fno-omit-frame-pointer)
  target_link_options(morvik_build INTERFACE -fsanitize=${sanitizers})
endif()

add_library(morvik_warnings INTERFACE)
target_compile_options(morvik_warnings INTERFACE -fno-exceptions -fno-rtti -Wall -Wextra -Wpedantic -Wshadow
                       -Wconversion -Werror)

# The start of the process is part of what a script waits for: what can be bound at link time is.
add_library(morvik_startup INTERFACE)
if(NOT sanitizers)
  target_link_options(morvik_startup INTERFACE -static-libstdc++ -static-libgcc -Wl,-O1,--as-needed,--gc-sections)
endif()
