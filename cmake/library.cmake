# The library for other programs: the same sources over the heap of the system, independent of where they are loaded,
# and with no name of their own to be seen. The signals, limits and streams of the process stay its owner's.
set(embedded ${sources})
list(FILTER embedded EXCLUDE REGEX "/src/(driver|runner)/")
add_library(morvik_embedded OBJECT ${embedded})
target_include_directories(morvik_embedded PUBLIC ${CMAKE_SOURCE_DIR}/src)
target_compile_definitions(morvik_embedded PRIVATE MORVIK_SYSTEM_HEAP)
target_compile_options(morvik_embedded PRIVATE -fvisibility=hidden -fvisibility-inlines-hidden)
set_target_properties(morvik_embedded PROPERTIES POSITION_INDEPENDENT_CODE ON)
target_link_libraries(morvik_embedded PRIVATE morvik_build Threads::Threads morvik_warnings morvik_hardening)

add_library(morvik_static STATIC $<TARGET_OBJECTS:morvik_embedded>)
add_library(morvik_shared SHARED $<TARGET_OBJECTS:morvik_embedded>)
foreach(library morvik_static morvik_shared)
  set_target_properties(${library} PROPERTIES OUTPUT_NAME morvik LINKER_LANGUAGE CXX VERSION ${PROJECT_VERSION} SOVERSION 0)
  target_link_libraries(${library} PRIVATE Threads::Threads)
  target_include_directories(${library} INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
endforeach()
set_target_properties(morvik_shared PROPERTIES EXPORT_NAME morvik PUBLIC_HEADER src/api/morvik.h)
set_target_properties(morvik_static PROPERTIES EXPORT_NAME static)
target_link_libraries(morvik_static INTERFACE stdc++ m)  # which a linker that is called for C does not add
target_link_options(morvik_shared PRIVATE -Wl,--exclude-libs,ALL,--as-needed,-z,relro,-z,now
                    -Wl,--version-script=${CMAKE_SOURCE_DIR}/cmake/morvik.map)
set_target_properties(morvik_shared PROPERTIES LINK_DEPENDS ${CMAKE_SOURCE_DIR}/cmake/morvik.map)
