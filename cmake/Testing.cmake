include(GoogleTest)

# morvaltide_add_test(<folder> SOURCES <test files> LIBRARIES <targets under test>)
#
# One test program a folder; every GoogleTest case becomes a CTest case. The
# shared main() of tests/support creates the offscreen application object.
function(morvaltide_add_test folder)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBRARIES;LABELS" ${ARGN})
  set(target test_${folder})
  add_executable(${target} ${ARG_SOURCES})
  target_link_libraries(${target} PRIVATE
    morvaltide_build_options morvaltide_test_support ${ARG_LIBRARIES})
  # Two thirds of the time to compile a test go into these headers.
  target_precompile_headers(${target} PRIVATE
    <gtest/gtest.h> <QByteArray> <QImage> <QString> <QStringList> <string> <vector>)
  if(MORVALTIDE_SANITIZERS)
    # Every start of a sanitized program takes a second, so one start has to do.
    add_test(NAME ${target} COMMAND ${target} --gtest_brief=1)
    set_tests_properties(${target} PROPERTIES TIMEOUT 1200 LABELS "${ARG_LABELS}")
    return()
  endif()
  set(labels)
  if(ARG_LABELS)
    set(labels LABELS "${ARG_LABELS}")
  endif()
  gtest_discover_tests(${target}
    NO_PRETTY_VALUES
    DISCOVERY_TIMEOUT 60
    PROPERTIES TIMEOUT 300 ${labels})
endfunction()
