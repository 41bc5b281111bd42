# `make package`: a .deb and a .tar.gz of all that is installed. What is packed does not depend on the folder that it is built
# in, nor, with SOURCE_DATE_EPOCH set, on the time.
set(MORVIK_CONTACT "Morvik maintainers <maintainers@morvik.invalid>" CACHE STRING "Who answers for the packages")
set(CPACK_GENERATOR DEB TGZ)
set(CPACK_PACKAGE_NAME morvik)
set(CPACK_PACKAGE_CONTACT ${MORVIK_CONTACT})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "interpreter of a postfix array language")
set(CPACK_PACKAGE_DESCRIPTION
"Values are scalars, vectors and arrays of characters, integers, reals,
complex numbers, quaternions and octonions, and words act on whole arrays.
The package holds the interpreter, a runner and a checker of scripts, a
prompt with history, completion and help, libraries in the language, and
the system as a library for C and C++.

The owner has not chosen a licence yet: the package grants none.")
set(CPACK_PACKAGE_FILE_NAME morvik-${PROJECT_VERSION}-${CMAKE_SYSTEM_NAME}-${CMAKE_SYSTEM_PROCESSOR})
set(CPACK_STRIP_FILES ON)
set(CPACK_MORVIK_STAGE ${CMAKE_SOURCE_DIR}/packaging/stage)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_SOURCE_DIR}/packaging/stage.cmake)

set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_MORVIK_VERSION ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION interpreters)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY >=)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "python3:any, python3-prompt-toolkit, python3-pygments")
set(deb postinst prerm triggers)
list(TRANSFORM deb PREPEND ${CMAKE_SOURCE_DIR}/packaging/deb/ OUTPUT_VARIABLE CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
include(CPack)
