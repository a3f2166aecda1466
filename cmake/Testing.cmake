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
  target_precompile_headers(${target} REUSE_FROM morvaltide_test_support)
  set(properties)
  if(ARG_LABELS)
    list(APPEND properties LABELS ${ARG_LABELS})
  endif()
  if("slow" IN_LIST ARG_LABELS)
    list(APPEND properties COST 100) # they mostly wait: first of all, beside the others
  endif()
  if(MORVALTIDE_SANITIZERS)
    # Every start of a sanitized program takes long, so a few starts have to do.
    set(shards 4)
    foreach(shard RANGE 1 ${shards})
      math(EXPR index "${shard} - 1")
      add_test(NAME ${target}.${shard} COMMAND ${target} --gtest_brief=1)
      set_tests_properties(${target}.${shard} PROPERTIES TIMEOUT 1200 ${properties}
        ENVIRONMENT "GTEST_TOTAL_SHARDS=${shards};GTEST_SHARD_INDEX=${index}")
    endforeach()
    return()
  endif()
  gtest_discover_tests(${target}
    NO_PRETTY_VALUES
    DISCOVERY_TIMEOUT 60
    PROPERTIES TIMEOUT 300 ${properties})
endfunction()
