# Objective-C++ with Foundation, AppKit and PreferencePanes of GNUstep, where they are: KELVO_GNUSTEP.

find_program(GNUSTEP_CONFIG gnustep-config)
find_library(PREFERENCE_PANES PreferencePanes)
set(objective_cxx "")
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-prog-name=cc1objplus
    OUTPUT_VARIABLE objective_cxx OUTPUT_STRIP_TRAILING_WHITESPACE)
endif()
if(GNUSTEP_CONFIG AND PREFERENCE_PANES AND EXISTS "${objective_cxx}")
  option(KELVO_BUILD_SYSTEM_PREFERENCES "Build the pane for System Preferences" ON)
else()
  # clang finds neither the headers nor the runtime of GCC's Objective-C, which GNUstep is built with here.
  message(STATUS "Without the pane for System Preferences, which needs g++, gobjc++ and GNUstep's development files")
  set(KELVO_BUILD_SYSTEM_PREFERENCES OFF)
endif()

if(KELVO_BUILD_SYSTEM_PREFERENCES)
  set(CMAKE_OBJCXX_COMPILER ${CMAKE_CXX_COMPILER})
  enable_language(OBJCXX)
  if(CCACHE AND NOT CMAKE_OBJCXX_COMPILER_LAUNCHER)
    set(CMAKE_OBJCXX_COMPILER_LAUNCHER ${CCACHE})
  endif()
  execute_process(COMMAND ${GNUSTEP_CONFIG} --variable=GNUSTEP_SYSTEM_HEADERS
    OUTPUT_VARIABLE headers OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)

  add_library(kelvo-gnustep INTERFACE)
  target_include_directories(kelvo-gnustep SYSTEM INTERFACE ${headers})
  target_compile_definitions(kelvo-gnustep INTERFACE
    GNUSTEP GNUSTEP_BASE_LIBRARY=1 GNU_GUI_LIBRARY=1 GNU_RUNTIME=1 _NATIVE_OBJC_EXCEPTIONS)
  # C++ members of Objective-C objects are made and destroyed with them. g++ reads a closure's captures as a message's
  # arguments first, and warns of values that are not used there; later ones take a
  # capture that is moved from a variable of its name for one that is moved to itself.
  target_compile_options(kelvo-gnustep INTERFACE
    -std=c++20 -fobjc-exceptions -fobjc-call-cxx-cdtors -fconstant-string-class=NSConstantString -Wno-unused-value
    $<$<VERSION_GREATER_EQUAL:$<CXX_COMPILER_VERSION>,13>:-Wno-self-move>)
  target_link_libraries(kelvo-gnustep INTERFACE ${PREFERENCE_PANES} gnustep-gui gnustep-base objc)
endif()
