# What `morvik -v` says about its own build: handed to the one source that prints it.
set(architecture ${CMAKE_SOURCE_DIR}/src/driver/architecture.cpp)
if(EXISTS ${architecture})
  string(TIMESTAMP buildtime "%Y-%m-%d %H:%M UTC" UTC)
  string(TOUPPER "${CMAKE_BUILD_TYPE}" buildtype)
  set_source_files_properties(${architecture} PROPERTIES COMPILE_DEFINITIONS
    "TARGET_SYSTEM=\"${CMAKE_SYSTEM_PROCESSOR}-${CMAKE_SYSTEM_NAME}\";BUILD_TIME=\"${buildtime}\";COMPILER_LINE=\"${CMAKE_CXX_COMPILER_ID} ${CMAKE_CXX_COMPILER_VERSION} -std=c++20 ${CMAKE_CXX_FLAGS_${buildtype}}\"")
endif()
