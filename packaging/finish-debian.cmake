# Run by CPack on the installed tree before it becomes a package: adds and
# compresses what Debian expects of every package.

function(find_one name result)
  file(GLOB_RECURSE found ${CPACK_TEMPORARY_DIRECTORY}/${name})
  list(LENGTH found count)
  if(NOT count EQUAL 1)
    message(FATAL_ERROR "One ${name} was expected in the package, not ${count}.")
  endif()
  set(${result} ${found} PARENT_SCOPE)
endfunction()

find_one(LICENSE licence)
file(GLOB_RECURSE pages ${CPACK_TEMPORARY_DIRECTORY}/*.1)

get_filename_component(docs ${licence} DIRECTORY)
# The copyright file has the same text.
file(REMOVE ${licence})
file(COPY ${CMAKE_CURRENT_LIST_DIR}/copyright ${CMAKE_CURRENT_LIST_DIR}/changelog
  DESTINATION ${docs}
  FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)

file(STRINGS ${docs}/changelog newest LIMIT_COUNT 1)
string(FIND "${newest}" "${CPACK_PACKAGE_NAME} (${CPACK_PACKAGE_VERSION}) " position)
if(NOT position EQUAL 0)
  message(FATAL_ERROR
    "packaging/changelog does not begin with version ${CPACK_PACKAGE_VERSION}: ${newest}")
endif()

execute_process(COMMAND gzip -9n ${docs}/changelog ${pages} COMMAND_ERROR_IS_FATAL ANY)
