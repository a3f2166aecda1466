# Flags of our own code, in one place: every target of this project links it
# privately.
add_library(morvaltide_build_options INTERFACE)

target_include_directories(morvaltide_build_options INTERFACE ${PROJECT_SOURCE_DIR}/src)
target_compile_definitions(morvaltide_build_options INTERFACE
  QT_NO_CAST_FROM_ASCII
  QT_NO_CAST_TO_ASCII
  QT_NO_KEYWORDS)
target_compile_options(morvaltide_build_options INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wold-style-cast
  -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align -Wcast-qual -Wformat=2 -Wundef
  -Wdouble-promotion -Wswitch-enum
  # Clang speaks of what the headers of the system use of each other.
  $<$<CXX_COMPILER_ID:Clang>:-Wno-deprecated-declarations>
  $<$<BOOL:${MORVALTIDE_WARNINGS_AS_ERRORS}>:-Werror>)

if(MORVALTIDE_SANITIZERS)
  target_compile_options(morvaltide_build_options INTERFACE
    -fsanitize=${MORVALTIDE_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(morvaltide_build_options INTERFACE -fsanitize=${MORVALTIDE_SANITIZERS})
endif()
