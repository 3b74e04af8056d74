# What every target is built with.

find_program(CCACHE ccache)
find_program(KELVO_ENV env REQUIRED)
if(CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  # What it needs to be told to take precompiled headers for the same.
  set(CMAKE_CXX_COMPILER_LAUNCHER ${KELVO_ENV} CCACHE_SLOPPINESS=pch_defines,time_macros ${CCACHE})
endif()

add_library(kelvo-settings INTERFACE)
target_compile_options(kelvo-settings INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
if(KELVO_SANITIZE)
  target_compile_options(kelvo-settings INTERFACE -fsanitize=${KELVO_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(kelvo-settings INTERFACE -fsanitize=${KELVO_SANITIZE})
  if(KELVO_SANITIZE MATCHES fuzzer)
    # An eighth of a run's time. The mutators know the words that matter, and reals cannot be traced anyway.
    target_compile_options(kelvo-settings INTERFACE -fno-sanitize-coverage=trace-cmp)
  endif()
endif()

# The bundle and whoever loads it lie at fixed places to each other, in the build folder as in the installed tree:
# bin/, the library folder (lib/ if nothing else is said) and kelvo-touch-display/KelvoTouchDisplay.prefPane in that.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/archive)
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
  file(RELATIVE_PATH CMAKE_INSTALL_LIBDIR "${CMAKE_INSTALL_PREFIX}" "${CMAKE_INSTALL_LIBDIR}")
endif()
set(KELVO_OWN_DIRECTORY ${CMAKE_INSTALL_LIBDIR}/kelvo-touch-display)
set(KELVO_PANE_DIRECTORY ${KELVO_OWN_DIRECTORY}/KelvoTouchDisplay.prefPane)
# Nobody but this program's own parts links its library, so it lies where no loader looks by itself.
set(KELVO_PRIVATE_LIBRARY_DIRECTORY ${KELVO_OWN_DIRECTORY}/private)
# The machine-wide Library is installed below the prefix like everything else; programs look for it at a whole path.
set(KELVO_LIBRARY_DIRECTORY ${KELVO_OWN_DIRECTORY}/Library)
set(KELVO_LOCAL_LIBRARY "${CMAKE_INSTALL_PREFIX}/${KELVO_LIBRARY_DIRECTORY}"
  CACHE STRING "Where programs look for the machine-wide Library folder")
set(CMAKE_INSTALL_RPATH "$ORIGIN/../${KELVO_PRIVATE_LIBRARY_DIRECTORY}")
# The package that what is installed belongs to, if nothing else is said.
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME main)
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)
