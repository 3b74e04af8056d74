# Headers that most sources include, compiled once for many of them. What is shipped is built without, by the presets
# release and package, so that each source is known to include what it uses.

option(KELVO_PRECOMPILE "Precompile the headers that most sources include" ON)

set(KELVO_STANDARD_HEADERS
  <algorithm> <array> <chrono> <cstdint> <filesystem> <functional> <map> <memory> <optional> <set> <string>
  <string_view> <utility> <variant> <vector>)
set(KELVO_TEST_HEADERS <gmock/gmock.h> <gtest/gtest.h> ${KELVO_STANDARD_HEADERS})

add_library(kelvo-precompiled INTERFACE)
# Without these ccache cannot tell that the headers are the same.
target_compile_options(kelvo-precompiled INTERFACE
  $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-fpch-preprocess>
  "$<$<COMPILE_LANG_AND_ID:CXX,Clang>:SHELL:-Xclang -fno-pch-timestamp>")

# Precompiles headers for one target.
function(kelvo_precompile target)
  if(KELVO_PRECOMPILE)
    target_link_libraries(${target} PRIVATE kelvo-precompiled)
    target_precompile_headers(${target} PRIVATE ${ARGN})
  endif()
endfunction()

# Lets a target use the headers that are precompiled for another, which is built in the same way.
function(kelvo_share_precompiled target owner)
  if(KELVO_PRECOMPILE)
    target_link_libraries(${target} PRIVATE kelvo-precompiled)
    target_precompile_headers(${target} REUSE_FROM ${owner})
  endif()
endfunction()

# The owners of what is shared compile nothing else, so that nobody waits for them. Libraries and programs differ in how
# their code may be placed.
set(KELVO_NO_SOURCE ${CMAKE_BINARY_DIR}/precompiled.cpp)
file(CONFIGURE OUTPUT ${KELVO_NO_SOURCE} CONTENT "int main() { return 0; }\n")
add_library(precompiled-for-libraries OBJECT EXCLUDE_FROM_ALL ${KELVO_NO_SOURCE})
target_link_libraries(precompiled-for-libraries PRIVATE kelvo-settings)
kelvo_precompile(precompiled-for-libraries ${KELVO_STANDARD_HEADERS})
