include(GoogleTest)

# morvaltide_add_test(<folder> SOURCES <test files> LIBRARIES <targets under test>
#                     [LABELS <label>])
#
# One test program a folder. The shared main() of tests/support creates the
# offscreen application object. For CTest every GoogleTest case is a test of its
# own (label "case"); with "ctest -C Shards -LE case" it runs the program in a few
# pieces instead, which spares thousands of starts. Under the sanitizers, where
# every start takes long, there are only the pieces.
function(morvaltide_add_test folder)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBRARIES;LABELS" ${ARGN})
  set(target test_${folder})
  add_executable(${target} ${ARG_SOURCES})
  target_link_libraries(${target} PRIVATE
    morvaltide_build_options morvaltide_test_support ${ARG_LIBRARIES})
  target_precompile_headers(${target} REUSE_FROM morvaltide_test_support)
  set(properties)
  if("slow" IN_LIST ARG_LABELS)
    list(APPEND properties COST 100) # they mostly wait: first of all, beside the others
  endif()

  set(configurations CONFIGURATIONS Shards)
  if(MORVALTIDE_SANITIZERS)
    set(configurations)
  endif()
  set(shards 4)
  foreach(shard RANGE 1 ${shards})
    math(EXPR index "${shard} - 1")
    add_test(NAME ${target}.${shard} COMMAND ${target} ${configurations})
    set_tests_properties(${target}.${shard} PROPERTIES TIMEOUT 1200 ${properties}
      LABELS "${ARG_LABELS}"
      ENVIRONMENT "GTEST_TOTAL_SHARDS=${shards};GTEST_SHARD_INDEX=${index}")
  endforeach()

  if(NOT MORVALTIDE_SANITIZERS)
    # GoogleTest.cmake would take a list apart.
    string(REPLACE ";" "\\;" labels "case;${ARG_LABELS}")
    gtest_discover_tests(${target}
      NO_PRETTY_VALUES
      DISCOVERY_TIMEOUT 60
      PROPERTIES TIMEOUT 300 ${properties} LABELS "${labels}")
  endif()
endfunction()
