# Every library comes from the system. Each message names the Debian package
# that holds what is missing.

# A macro, because a function would hide the variables that find_package sets.
macro(morvaltide_find package debianPackage)
  find_package(${package} ${ARGN} QUIET)
  if(NOT ${package}_FOUND)
    message(FATAL_ERROR "${package} was not found: install the Debian package ${debianPackage}.")
  endif()
endmacro()

morvaltide_find(Qt5 qtbase5-dev 5.15 COMPONENTS Core Gui)
morvaltide_find(Boost libboost-program-options-dev 1.53 CONFIG COMPONENTS program_options)
morvaltide_find(fmt libfmt-dev 6)
morvaltide_find(TIFF libtiff-dev)
if(BUILD_TESTING)
  morvaltide_find(GTest libgtest-dev)
endif()
if(MORVALTIDE_BENCHMARKS)
  morvaltide_find(benchmark libbenchmark-dev)
endif()
