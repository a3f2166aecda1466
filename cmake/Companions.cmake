# The programs around the converter: what they are made of and where it goes.

foreach(companion morvaltide-batch morvaltide-mail morvaltide-prepare morvaltide-watch)
  configure_file(man/${companion}.1.in man/${companion}.1 @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/man/${companion}.1
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
  install(PROGRAMS companions/${companion} DESTINATION ${CMAKE_INSTALL_BINDIR})
endforeach()

# The programs look for their code in ../share/morvaltide.
install(DIRECTORY companions/morvaltide_companions companions/morvaltide_prepare
  DESTINATION ${CMAKE_INSTALL_DATADIR}/morvaltide
  FILES_MATCHING PATTERN "*.py" PATTERN "__pycache__" EXCLUDE)

# Units lie where systemd looks, and are not enabled by anything.
set(MORVALTIDE_UNIT_DIR lib/systemd/system CACHE STRING "Where systemd's units are installed")
install(FILES packaging/systemd/morvaltide-watch.path packaging/systemd/morvaltide-watch.service
  DESTINATION ${MORVALTIDE_UNIT_DIR})

install(FILES examples/jobs.tsv DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples)
install(FILES samples/cover.html DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples)
install(PROGRAMS
    examples/recipes/call-fax
    examples/recipes/fax-all
    examples/recipes/fax-array
    examples/recipes/fax-submit
    examples/recipes/fax-to-mail
    examples/recipes/mail-to-fax
    examples/recipes/make-cover
    examples/recipes/spool-fax
  DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples/recipes)
install(FILES examples/recipes/FaxModify DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples/recipes)
install(FILES SECURITY.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
