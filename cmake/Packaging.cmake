# What `make package` packs besides the installation: documents, examples, licences of what is compiled or linked in.
install(FILES README.md CHANGELOG.md CONTRIBUTING.md SECURITY.md DESTINATION "${CMAKE_INSTALL_DOCDIR}")
install(DIRECTORY docs DESTINATION "${CMAKE_INSTALL_DOCDIR}" FILES_MATCHING PATTERN "*.md" PATTERN "*.json" PATTERN api EXCLUDE)
install(FILES examples/plugin_host.cpp examples/direct_link.cpp examples/c_host.c examples/python_host.py
    DESTINATION "${CMAKE_INSTALL_DOCDIR}/examples")
foreach(project project c_project)
    install(FILES examples/${project}/CMakeLists.txt DESTINATION "${CMAKE_INSTALL_DOCDIR}/examples/${project}")
endforeach()

# By Debian's packages, which the parts come from, and whose names and versions lead to their sources.
set(parts libcli11-dev nlohmann-json3-dev)
if(CMAKE_CROSSCOMPILING)
    list(APPEND parts libsamplerate0-dev libmpg123-dev libpng-dev libz-mingw-w64-dev
        gcc-mingw-w64-base mingw-w64-x86-64-dev)
endif()
foreach(part IN LISTS parts)
    # Missing on other systems than Debian; the packages' test asks for them.
    if(EXISTS "/usr/share/doc/${part}/copyright")
        install(FILES "/usr/share/doc/${part}/copyright"
            DESTINATION "${CMAKE_INSTALL_DOCDIR}/licences" RENAME "${part}.txt")
    endif()
endforeach()

# What is packed was built before; the tests need not be.
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON)
set(CPACK_PACKAGE_NAME ${PROJECT_NAME})
set(CPACK_PACKAGE_CONTACT "${PROJECT_NAME} developers")
set(CPACK_PACKAGE_DESCRIPTION "Reads MPEG audio, Layers II and III, for media hosts: a module with its headers, and mpatool.")
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_SOURCE_DIR}/build/packages")
set(CPACK_STRIP_FILES ON)
if(WIN32)
    set(CPACK_GENERATOR ZIP)
    set(CPACK_PACKAGE_FILE_NAME "${PROJECT_NAME}-${PROJECT_VERSION}-windows-x64")
else()
    set(CPACK_GENERATOR DEB)
    set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
    set(CPACK_DEBIAN_PACKAGE_SECTION libs)
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
    set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
    # Loaded at run time when the settings ask for the external decoder.
    set(CPACK_DEBIAN_PACKAGE_RECOMMENDS libmpg123-0)
endif()
include(CPack)
