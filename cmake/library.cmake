# The library for other programs: the same sources over the heap of the system, independent of where they are loaded,
# and with no name of their own to be seen. The signals, limits and streams of the process stay its owner's.
include(GNUInstallDirs)
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
  set_target_properties(${library} PROPERTIES OUTPUT_NAME morvik LINKER_LANGUAGE CXX PUBLIC_HEADER src/api/morvik.h
                        VERSION ${PROJECT_VERSION} SOVERSION 0)
  target_link_libraries(${library} PRIVATE Threads::Threads)
endforeach()
target_link_options(morvik_shared PRIVATE -Wl,--exclude-libs,ALL,--as-needed,-z,relro,-z,now
                    -Wl,--version-script=${CMAKE_SOURCE_DIR}/cmake/morvik.map)
set_target_properties(morvik_shared PROPERTIES LINK_DEPENDS ${CMAKE_SOURCE_DIR}/cmake/morvik.map)

file(RELATIVE_PATH MORVIK_PREFIX /at/${CMAKE_INSTALL_LIBDIR}/pkgconfig /at)
configure_file(cmake/morvik.pc.in morvik.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/morvik.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
install(TARGETS morvik_static morvik_shared LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} PUBLIC_HEADER DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
