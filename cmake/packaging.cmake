# Installing and packaging. `cmake --install` puts the two programs in bin/,
# the desktop entry and the icon where a desktop's menu looks for them;
# `cpack` (scripts/package) makes a Debian package of the same files.

install(FILES packaging/tkquarv.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES packaging/tkquarv.svg DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)

set(QUARV_PACKAGE_MAINTAINER "tkQuarv maintainers <maintainers@tkquarv.invalid>"
  CACHE STRING "Maintainer field of the Debian package: Name <address>")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tkquarv)
set(CPACK_PACKAGE_VENDOR tkQuarv)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "${QUARV_PACKAGE_MAINTAINER}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "analyses of the books of a PostgreSQL accounting database")
set(CPACK_PACKAGE_DESCRIPTION
"Account sheets with running balances, the journal register, detailed
ledgers and more, each worked in a grid with grouping, sums and a filter
row, exported to CSV, tab text or .xlsx. The texts are in Romanian.

The desktop program tkQuarv comes with a menu entry; tkquarv-export runs
the same analyses from the command line. The books live on a PostgreSQL
server elsewhere: this package needs only its client library.")
set(CPACK_STRIP_FILES ON)

set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${QUARV_PACKAGE_MAINTAINER}")
set(CPACK_DEBIAN_PACKAGE_SECTION misc)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
# Depends is what dpkg-shlibdeps finds the installed programs linked against
# (Qt, libpq, libxlsxwriter, the C++ runtime); Qt's platform plugins come
# with libqt6gui6.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)

include(CPack)
