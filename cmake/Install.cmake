# What a host needs: the module, its headers, the tool, a CMake package and a pkg-config file.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# The headers include one another from a root of their own, which hosts have on their include path.
set(TRN_INSTALL_HEADERS "${CMAKE_INSTALL_INCLUDEDIR}/trnmpafileread")
set(TRN_INSTALL_PACKAGE "${CMAKE_INSTALL_LIBDIR}/cmake/trnmpafileread")

target_include_directories(trnmpafileread INTERFACE "$<INSTALL_INTERFACE:${TRN_INSTALL_HEADERS}>")
target_compile_features(trnmpafileread INTERFACE cxx_std_20)
if(WIN32)
    # Automation strings.
    target_link_libraries(trnmpafileread INTERFACE oleaut32)
endif()

install(TARGETS trnmpafileread EXPORT trnmpafileread
    RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}"
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
    ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}")
if(TRN_WITH_EXTERNAL_DECODER AND MPG123_RUNTIME)
    install(FILES "${MPG123_RUNTIME}" DESTINATION "${CMAKE_INSTALL_BINDIR}")
endif()
install(TARGETS mpatool RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
if(NOT CMAKE_CROSSCOMPILING)
    install(DIRECTORY "${PROJECT_BINARY_DIR}/manual/" DESTINATION "${CMAKE_INSTALL_DATADIR}")
endif()
install(DIRECTORY include/trnmpafileread DESTINATION "${TRN_INSTALL_HEADERS}" FILES_MATCHING PATTERN "*.h")
install(FILES platform/os/automation_string.h platform/os/wave_format.h platform/os/windows_macros.h
    DESTINATION "${TRN_INSTALL_HEADERS}/os")
install(FILES platform/os/posix/automation_string.h DESTINATION "${TRN_INSTALL_HEADERS}/os/posix")
install(FILES platform/trnmediadet/media_info.h DESTINATION "${TRN_INSTALL_HEADERS}/trnmediadet")

install(EXPORT trnmpafileread NAMESPACE trnmpafileread:: DESTINATION "${TRN_INSTALL_PACKAGE}"
    FILE trnmpafileread-config.cmake)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/trnmpafileread-config-version.cmake"
    COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/trnmpafileread-config-version.cmake" DESTINATION "${TRN_INSTALL_PACKAGE}")

file(RELATIVE_PATH TRN_PC_PREFIX "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
string(REGEX REPLACE "/$" "" TRN_PC_PREFIX "${TRN_PC_PREFIX}")
set(TRN_PC_LIBS "")
if(WIN32)
    set(TRN_PC_LIBS " -loleaut32")
endif()
configure_file(cmake/trnmpafileread.pc.in "${PROJECT_BINARY_DIR}/trnmpafileread.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/trnmpafileread.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
