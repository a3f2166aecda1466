# What is installed besides the program, and the Debian package made of it.

configure_file(man/morvaltide.1.in man/morvaltide.1 @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/man/morvaltide.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)

include(cmake/Companions.cmake)

# Debian's zsh also looks into site-functions, but below /usr/local only.
set(MORVALTIDE_ZSH_COMPLETION_DIR ${CMAKE_INSTALL_DATADIR}/zsh/site-functions CACHE STRING
  "Where the completion for zsh is installed")
install(FILES completions/morvaltide.bash RENAME morvaltide
  DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
install(FILES completions/_morvaltide DESTINATION ${MORVALTIDE_ZSH_COMPLETION_DIR})
install(FILES completions/morvaltide.fish
  DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)

install(FILES docs/gallery.md docs/recipes.md docs/viewing.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs/images DESTINATION ${CMAKE_INSTALL_DOCDIR}
  FILES_MATCHING PATTERN "gallery-*.png")

# One program under three names, as the fax server calls it.
install(PROGRAMS companions/hylafax/morvaltide-ps2fax
  DESTINATION ${CMAKE_INSTALL_DATADIR}/morvaltide/hylafax)
foreach(name morvaltide-pdf2fax morvaltide-tiff2fax)
  file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/hylafax)
  file(CREATE_LINK morvaltide-ps2fax ${PROJECT_BINARY_DIR}/hylafax/${name} SYMBOLIC)
  install(FILES ${PROJECT_BINARY_DIR}/hylafax/${name}
    DESTINATION ${CMAKE_INSTALL_DATADIR}/morvaltide/hylafax)
endforeach()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ${PROJECT_NAME})
set(CPACK_PACKAGE_VENDOR "The morvaltide authors")
set(CPACK_PACKAGE_CONTACT "The morvaltide authors <morvaltide@packages.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "turns documents into one multi-page fax TIFF")
set(CPACK_PACKAGE_DESCRIPTION
"morvaltide converts PDF, TIFF, JPEG and PNG documents, with an optional HTML
cover page in front of them, into one TIFF file of bilevel fax pages, coded
with CCITT group 3 or group 4, for fax servers and mail gateways.
.
Paper size, resolution, margins and rotation can be chosen. The program runs
without a display.
.
Its companions make documents of other kinds ready (morvaltide-prepare), turn
mails into faxes (morvaltide-mail), convert lists of documents on one machine
or many (morvaltide-batch) and what arrives in a folder (morvaltide-watch), and
serve the queue of a HylaFAX server (morvaltide-ps2fax).")
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/packaging/finish-debian.cmake)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION comm)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# What is not linked: the interpreter of PDF documents, the plug-in that reads
# TIFF files, the database by which contents are recognised, and the language
# of the companion programs.
set(CPACK_DEBIAN_PACKAGE_DEPENDS
  "ghostscript (>= 10~), python3, qt${MORVALTIDE_QT}-image-formats-plugins, shared-mime-info")
# The platform without a display comes with a library of Qt that is linked, or in
# a package of its own.
execute_process(
  COMMAND dpkg-query --search */qt${MORVALTIDE_QT}/plugins/platforms/libqoffscreen.so
  OUTPUT_VARIABLE platformPackage ERROR_QUIET)
string(REGEX REPLACE "[:,].*" "" platformPackage "${platformPackage}")
if(platformPackage AND NOT platformPackage MATCHES "^lib")
  string(APPEND CPACK_DEBIAN_PACKAGE_DEPENDS ", ${platformPackage}")
endif()
# What the companion programs call.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS
  "fonts-dejavu-core, fontconfig, imagemagick, libjpeg-turbo-progs, libtiff-tools, paps, qpdf")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS
  "fonts-noto-core, fonts-noto-cjk, libreoffice, openssh-client, parallel")

include(CPack)
