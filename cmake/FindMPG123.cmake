# libmpg123, which is loaded at run time: MPG123_INCLUDE_DIR, MPG123_RUNTIME_NAME (the file name to load), on Windows
# MPG123_RUNTIME (the DLL's path). Where it is looked for can be told with CMAKE_PREFIX_PATH.
include(FindPackageHandleStandardArgs)

find_path(MPG123_INCLUDE_DIR mpg123.h)
find_library(MPG123_LIBRARY NAMES mpg123 libmpg123)
set(required MPG123_LIBRARY MPG123_INCLUDE_DIR)
if(WIN32)
    find_file(MPG123_RUNTIME NAMES libmpg123-0.dll mpg123.dll PATH_SUFFIXES bin)
    list(APPEND required MPG123_RUNTIME)
endif()
if(MPG123_RUNTIME)
    get_filename_component(MPG123_RUNTIME_NAME "${MPG123_RUNTIME}" NAME)
elseif(MPG123_LIBRARY)
    get_filename_component(MPG123_RUNTIME_NAME "${MPG123_LIBRARY}" REALPATH)
    get_filename_component(MPG123_RUNTIME_NAME "${MPG123_RUNTIME_NAME}" NAME)
    # Versions with the same first number can stand in for each other.
    string(REGEX REPLACE "(\\.so\\.[0-9]+).*" "\\1" MPG123_RUNTIME_NAME "${MPG123_RUNTIME_NAME}")
endif()
mark_as_advanced(MPG123_INCLUDE_DIR MPG123_LIBRARY MPG123_RUNTIME)

find_package_handle_standard_args(MPG123
    REQUIRED_VARS ${required}
    REASON_FAILURE_MESSAGE "Debian: 'scripts/setup run', for Windows 'scripts/setup windows', elsewhere as vcpkg.json says. Or leave it out: -DTRN_WITH_EXTERNAL_DECODER=OFF.")
