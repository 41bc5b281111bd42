# What `cmake --install` puts where. Programs find what they need from where they are themselves, so that the whole may be
# moved; DESTDIR and prefixes are CMake's own. The list of what was installed is left in share/morvik/installed.txt, and
# share/morvik/uninstall.cmake goes by it.
set(MORVIK_ZSH_FOLDER ${CMAKE_INSTALL_DATADIR}/zsh/site-functions CACHE STRING "Where zsh looks for completions, from the prefix")
set(shared ${CMAKE_INSTALL_DATADIR}/morvik)
set(documents ${CMAKE_INSTALL_DATAROOTDIR}/doc/morvik)

install(TARGETS morvik morvik-confined morvik-run morvik-check)
install(DIRECTORY lib/ DESTINATION ${shared}/lib FILES_MATCHING PATTERN "*.morvik")

# The prompt and the filter of signs stand beside their modules, and links lead to them.
install(PROGRAMS python/morvik-prompt python/morvik-signs DESTINATION ${shared})
install(DIRECTORY python/morvik DESTINATION ${shared} FILES_MATCHING PATTERN "*.py")
install(PROGRAMS python/morvik/edit DESTINATION ${shared}/morvik)
file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/links)
file(RELATIVE_PATH toshared /${CMAKE_INSTALL_BINDIR} /${shared})
foreach(script morvik-prompt morvik-signs)
  file(CREATE_LINK ${toshared}/${script} ${CMAKE_BINARY_DIR}/links/${script} SYMBOLIC)
  install(FILES ${CMAKE_BINARY_DIR}/links/${script} TYPE BIN)
endforeach()

# The library: for pkg-config, and for find_package(Morvik), which gives Morvik::morvik and Morvik::static.
include(CMakePackageConfigHelpers)
file(RELATIVE_PATH MORVIK_PREFIX /at/${CMAKE_INSTALL_LIBDIR}/pkgconfig /at)
configure_file(cmake/morvik.pc.in morvik.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/morvik.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
install(TARGETS morvik_static morvik_shared EXPORT MorvikTargets)
set(config ${CMAKE_INSTALL_LIBDIR}/cmake/Morvik)
install(EXPORT MorvikTargets NAMESPACE Morvik:: DESTINATION ${config})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/MorvikConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES cmake/MorvikConfig.cmake ${CMAKE_BINARY_DIR}/MorvikConfigVersion.cmake DESTINATION ${config})

# What an installation takes from the build.
add_custom_target(installable DEPENDS programs morvik_static morvik_shared)

# Pages of the manual and completions are made from what the programs say of their options; that takes Python.
find_package(Python3 COMPONENTS Interpreter QUIET)
if(Python3_FOUND AND NOT CMAKE_CROSSCOMPILING)
  set(pages ${CMAKE_BINARY_DIR}/pages)
  file(GLOB makers CONFIGURE_DEPENDS packaging/*.py packaging/generate packaging/man/*.in python/morvik/prompt.py
       python/morvik/options.py python/morvik/signs.py)
  add_custom_command(OUTPUT ${pages}/made COMMAND ${Python3_EXECUTABLE} -B packaging/generate ${pages} ${CMAKE_BINARY_DIR}
                     COMMAND ${CMAKE_COMMAND} -E touch ${pages}/made WORKING_DIRECTORY ${CMAKE_SOURCE_DIR}
                     DEPENDS morvik morvik-confined morvik-run morvik-check ${makers} CMakeLists.txt VERBATIM)
  file(GLOB_RECURSE extension CONFIGURE_DEPENDS editors/vscode/*)
  add_custom_command(OUTPUT morvik.vsix COMMAND ${Python3_EXECUTABLE} -B editors/package ${CMAKE_BINARY_DIR}/morvik.vsix
                     WORKING_DIRECTORY ${CMAKE_SOURCE_DIR} DEPENDS ${extension} CMakeLists.txt VERBATIM)
  add_custom_target(pages ALL DEPENDS ${pages}/made morvik.vsix)
  add_dependencies(installable pages)
  install(DIRECTORY ${pages}/man/ DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
  install(DIRECTORY ${pages}/bash/ DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
  install(DIRECTORY ${pages}/zsh/ DESTINATION ${MORVIK_ZSH_FOLDER})
  install(DIRECTORY ${pages}/fish/ DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
  install(FILES ${CMAKE_BINARY_DIR}/morvik.vsix DESTINATION ${shared})
endif()

# Files for editors, where Vim and Emacs look for them.
install(DIRECTORY editors/vim/ DESTINATION ${CMAKE_INSTALL_DATADIR}/vim/vimfiles)
install(FILES editors/emacs/morvik.el editors/emacs/morvik-grammar.el DESTINATION ${CMAKE_INSTALL_DATADIR}/emacs/site-lisp)

# The pages as they are read in the tree, and the site where `make docs` has built it.
install(FILES README.md CHANGELOG.md DESTINATION ${documents})
install(DIRECTORY docs examples DESTINATION ${documents} PATTERN "*.expected" EXCLUDE)
if(MORVIK_PACKAGE)
  add_custom_target(site ALL COMMAND tools/python mkdocs pygments -- -B web/build ${CMAKE_BINARY_DIR}/site
                    WORKING_DIRECTORY ${CMAKE_SOURCE_DIR} VERBATIM)
  add_dependencies(installable site)
endif()
install(DIRECTORY ${CMAKE_BINARY_DIR}/site/ DESTINATION ${documents}/html OPTIONAL)

# Last, since it lists what stands above.
install(FILES cmake/uninstall.cmake DESTINATION ${shared})
install(CODE "set(list ${shared}/installed.txt)")
install(CODE [[
  set(lines ${list})
  foreach(file IN LISTS CMAKE_INSTALL_MANIFEST_FILES)
    cmake_path(RELATIVE_PATH file BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX})
    list(APPEND lines ${file})
  endforeach()
  list(JOIN lines "\n" lines)
  file(WRITE $ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}/${list} "${lines}\n")
]])
