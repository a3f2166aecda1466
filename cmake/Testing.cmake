include(GoogleTest)

# What no sanitizer can bear or see is tested with a program built without any:
# limits of memory, the fence, what is left in memory. So is what converts many
# times over. A build with sanitizers has to be told of one, or does without.
set(MORVALTIDE_PLAIN_PROGRAM "" CACHE FILEPATH
  "In a build with sanitizers: the program built without them, for the tests that need it")
set(MORVALTIDE_QT6_PROGRAM "" CACHE FILEPATH
  "The program built with Qt 6, for the tests of what differs, in a build with Qt 5")
if(NOT MORVALTIDE_SANITIZERS)
  set(morvaltide_plain_program $<TARGET_FILE:morvaltide>)
else()
  set(morvaltide_plain_program ${MORVALTIDE_PLAIN_PROGRAM})
endif()

# Those that do not start the program, or not as their subject.
add_custom_target(unit_tests)

# What tests start.
set(morvaltide_program $<TARGET_FILE:morvaltide>)
if(morvaltide_plain_program)
  set(morvaltide_program ${morvaltide_plain_program})
endif()

# morvaltide_join_tests(<variable> <target> <source>...): one source instead of many,
# where CMake joins those of the program (CMAKE_UNITY_BUILD), which compiles in a
# fraction of the time. Tests use the same short names over and over: each test file
# gets a namespace of its own, behind everything that any of them includes. What
# they share is left as it is.
function(morvaltide_join_tests variable target)
  set(includes)
  set(tests)
  set(others)
  foreach(source ${ARGN})
    get_filename_component(path ${source} ABSOLUTE)
    get_filename_component(folder ${path} DIRECTORY)
    get_filename_component(name ${path} NAME_WE)
    if(NOT name MATCHES "^test_")
      list(APPEND others ${source})
      continue()
    endif()
    string(APPEND tests "namespace joined_${name} {\n#include \"${path}\"\n}\n")
    file(STRINGS ${path} lines REGEX "^#include ")
    foreach(line ${lines})
      string(REGEX REPLACE "^#include \"([^\"]*)\"" "\\1" header "${line}")
      if(EXISTS ${folder}/${header})
        set(line "#include \"${folder}/${header}\"")
      endif()
      list(APPEND includes "${line}")
    endforeach()
  endforeach()
  list(REMOVE_DUPLICATES includes)
  list(JOIN includes "\n" includes)
  file(GENERATE OUTPUT ${target}.cpp CONTENT "${includes}\n${tests}")
  set(${variable} ${CMAKE_CURRENT_BINARY_DIR}/${target}.cpp ${others} PARENT_SCOPE)
endfunction()

# morvaltide_add_shards(<name> <target> <label...> <cost> <environment...>): runs a
# test program in a few pieces.
function(morvaltide_add_shards name target labels cost environment)
  set(configurations CONFIGURATIONS Shards)
  if(MORVALTIDE_SANITIZERS)
    set(configurations)
  endif()
  set(shards 4)
  foreach(shard RANGE 1 ${shards})
    math(EXPR index "${shard} - 1")
    add_test(NAME ${name}.${shard} COMMAND ${target} ${configurations})
    set_tests_properties(${name}.${shard} PROPERTIES TIMEOUT 1200 COST ${cost} LABELS "${labels}"
      ENVIRONMENT "GTEST_TOTAL_SHARDS=${shards};GTEST_SHARD_INDEX=${index};${environment}")
  endforeach()
endfunction()

# morvaltide_add_test(<folder> SOURCES <test files> LIBRARIES <targets under test>
#                     [LABELS <label>] [COST <cost>] [PROGRAM]
#                     [SANITIZED] [UNSANITIZED <patterns>] [TWICE <patterns>]
#                     [QT6 <patterns>])
#
# One test program a folder. The shared main() of tests/support creates the
# offscreen application object. For CTest every GoogleTest case is a test of its
# own (label "case"); with "ctest -C Shards -LE case" it runs the program in a few
# pieces instead, which spares thousands of starts. Under the sanitizers, where
# every start takes long, there are only the pieces. Those of a higher cost come
# first.
#
# PROGRAM: the test starts the program. SANITIZED: where there is a program with
# sanitizers and one without, each case runs once, with the first, but for those of
# UNSANITIZED, patterns of GoogleTest, which run with the second. Either filter is the
# other one negated, so that no case is lost. Those of TWICE run with both. If there is
# a program with Qt 6 besides, those of QT6 run with that one, too.
function(morvaltide_add_test folder)
  cmake_parse_arguments(ARG "PROGRAM;SANITIZED" "COST"
    "SOURCES;LIBRARIES;LABELS;UNSANITIZED;TWICE;QT6" ${ARGN})
  set(target test_${folder})
  if(CMAKE_UNITY_BUILD)
    morvaltide_join_tests(ARG_SOURCES ${target} ${ARG_SOURCES})
  endif()
  add_executable(${target} ${ARG_SOURCES})
  target_link_libraries(${target} PRIVATE
    morvaltide_build_options morvaltide_test_support ${ARG_LIBRARIES})
  target_precompile_headers(${target} REUSE_FROM morvaltide_test_support)
  if(ARG_PROGRAM)
    target_compile_definitions(${target} PRIVATE MORVALTIDE_PROGRAM="${morvaltide_program}")
    add_dependencies(${target} morvaltide)
  endif()
  if(NOT ARG_LABELS)
    add_dependencies(unit_tests ${target})
  endif()

  if(NOT ARG_COST)
    set(ARG_COST 0)
  endif()
  if(ARG_QT6 AND MORVALTIDE_QT6_PROGRAM)
    list(JOIN ARG_QT6 ":" filter)
    morvaltide_add_shards(${target}.qt6 ${target} "${ARG_LABELS}" ${ARG_COST}
      "MORVALTIDE_PROGRAM=${MORVALTIDE_QT6_PROGRAM};GTEST_FILTER=${filter}")
  endif()
  set(patterns ${ARG_UNSANITIZED} ${ARG_TWICE})
  if(NOT ARG_SANITIZED OR NOT MORVALTIDE_SANITIZERS)
    morvaltide_add_shards(${target} ${target} "${ARG_LABELS}" ${ARG_COST} "")
  else()
    set(filter "*")
    if(ARG_UNSANITIZED)
      list(JOIN ARG_UNSANITIZED ":" filter)
      string(PREPEND filter "-")
    endif()
    morvaltide_add_shards(${target}.sanitized ${target} "${ARG_LABELS}" ${ARG_COST}
      "MORVALTIDE_PROGRAM=$<TARGET_FILE:morvaltide>;GTEST_FILTER=${filter}")
    if(morvaltide_plain_program AND patterns)
      list(JOIN patterns ":" filter)
      morvaltide_add_shards(${target} ${target} "${ARG_LABELS}" ${ARG_COST}
        "GTEST_FILTER=${filter}")
    endif()
    if(patterns)
      add_test(NAME ${target}.patterns COMMAND ${PROJECT_SOURCE_DIR}/tests/check-patterns
        $<TARGET_FILE:${target}> ${patterns} ${ARG_QT6})
      set_tests_properties(${target}.patterns PROPERTIES LABELS "${ARG_LABELS}")
    endif()
  endif()

  # Who joins sources does so to run the pieces.
  if(NOT MORVALTIDE_SANITIZERS AND NOT CMAKE_UNITY_BUILD)
    # GoogleTest.cmake would take a list apart.
    string(REPLACE ";" "\\;" labels "case;${ARG_LABELS}")
    gtest_discover_tests(${target}
      NO_PRETTY_VALUES
      DISCOVERY_TIMEOUT 60
      PROPERTIES TIMEOUT 300 COST ${ARG_COST} LABELS "${labels}")
  endif()
endfunction()
