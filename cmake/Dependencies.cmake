# Every library comes from the system. One message names the Debian packages of
# all that is missing.

# A macro, because a function would hide the variables that find_package sets.
macro(morvaltide_find package debianPackage)
  find_package(${package} ${ARGN} QUIET)
  if(NOT ${package}_FOUND)
    list(APPEND morvaltide_missing ${package})
    list(APPEND morvaltide_missing_debian ${debianPackage})
  endif()
endmacro()

set(morvaltide_missing)
set(morvaltide_missing_debian)

# Targets are named Qt::Core and Qt::Gui with either version.
set(MORVALTIDE_QT 5 CACHE STRING "Version of Qt to build with: 5 or 6")
set_property(CACHE MORVALTIDE_QT PROPERTY STRINGS 5 6)
if(MORVALTIDE_QT EQUAL 5)
  morvaltide_find(Qt5 qtbase5-dev 5.15 COMPONENTS Core Gui)
elseif(MORVALTIDE_QT EQUAL 6)
  morvaltide_find(Qt6 qt6-base-dev 6.4 COMPONENTS Core Gui)
else()
  message(FATAL_ERROR "MORVALTIDE_QT is 5 or 6, not '${MORVALTIDE_QT}'.")
endif()
morvaltide_find(Boost "libboost-dev;libboost-program-options-dev" 1.70 CONFIG
  COMPONENTS program_options)
morvaltide_find(fmt libfmt-dev 6)
morvaltide_find(TIFF libtiff-dev)
if(BUILD_TESTING)
  morvaltide_find(GTest libgtest-dev)
endif()
if(MORVALTIDE_BENCHMARKS)
  morvaltide_find(benchmark libbenchmark-dev)
endif()

if(morvaltide_missing)
  list(JOIN morvaltide_missing ", " morvaltide_missing)
  list(JOIN morvaltide_missing_debian " " morvaltide_missing_debian)
  message(FATAL_ERROR "Not found: ${morvaltide_missing}. "
    "Install the Debian packages ${morvaltide_missing_debian}.")
endif()
