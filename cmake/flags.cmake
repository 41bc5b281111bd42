# How the code is built, as bundles: for everything, two for what is in src/, and one for the linking of `morvik`.

# No contraction: a product and a sum round twice on every machine, so that results do not depend on the compiler.
add_library(morvik_build INTERFACE)
target_compile_options(morvik_build INTERFACE -ffp-contract=off)
if(MORVIK_PACKAGE)
  target_compile_options(morvik_build INTERFACE -ffile-prefix-map=${CMAKE_SOURCE_DIR}=.)
endif()
if(NOT MORVIK_QUICK)
  target_compile_definitions(morvik_build INTERFACE MORVIK_NO_QUICK_LOOP)
endif()
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

# What a release build has against faults that nobody has found yet: a guard word in the frames that hold arrays, and
# bounds asked by the library where the compiler knows them. Marked targets of indirect jumps (-fcf-protection) are left
# out: they count only where all that is linked bears the marks, which few systems' start files do, and cost 3 %.
add_library(morvik_hardening INTERFACE)
if(CMAKE_BUILD_TYPE STREQUAL "Release" AND NOT sanitizers)
  target_compile_options(morvik_hardening INTERFACE -fstack-protector-strong -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2
                         $<$<NOT:$<BOOL:$<TARGET_PROPERTY:POSITION_INDEPENDENT_CODE>>>:-fPIE>)
endif()

# None of them ends a build but in the developers' presets: a compiler that is newer than this warns of more.
add_library(morvik_warnings INTERFACE)
target_compile_options(morvik_warnings INTERFACE -fno-exceptions -fno-rtti -Wall -Wextra -Wpedantic -Wshadow
                       -Wconversion)

# The start of the process is part of what a script waits for: what can be bound at link time is.
add_library(morvik_startup INTERFACE)
if(NOT sanitizers)
  target_link_options(morvik_startup INTERFACE -static-libstdc++ -static-libgcc -Wl,-O1,--as-needed,--gc-sections)
  # What the loader writes to is closed before the first line runs; so all of it is bound by then.
  target_link_options(morvik_startup INTERFACE $<$<CONFIG:Release>:-pie> -Wl,-z,relro,-z,now,-z,noexecstack)
endif()
