# The version stands in project() alone, and is handed to the sources that tell it. What `morvik -v` says beside it about
# its own build goes to the one source that prints it.
set(architecture src/driver/architecture.cpp)
set_property(SOURCE ${architecture} src/runner/choices.cpp src/api/morvik.cpp
             APPEND PROPERTY COMPILE_DEFINITIONS MORVIK_VERSION="${PROJECT_VERSION}")
string(TIMESTAMP buildtime "%Y-%m-%d %H:%M UTC" UTC)
string(TOUPPER "${CMAKE_BUILD_TYPE}" buildtype)
set_property(SOURCE ${architecture} APPEND PROPERTY COMPILE_DEFINITIONS
  "TARGET_SYSTEM=\"${CMAKE_SYSTEM_PROCESSOR}-${CMAKE_SYSTEM_NAME}\";BUILD_TIME=\"${buildtime}\";COMPILER_LINE=\"${CMAKE_CXX_COMPILER_ID} ${CMAKE_CXX_COMPILER_VERSION} -std=c++20 ${CMAKE_CXX_FLAGS_${buildtype}}\"")
