# libsamplerate as SampleRate::samplerate. Any build of it will do; where one is looked for can be told with
# CMAKE_PREFIX_PATH.
include(FindPackageHandleStandardArgs)

find_path(SampleRate_INCLUDE_DIR samplerate.h)
find_library(SampleRate_LIBRARY NAMES samplerate)
mark_as_advanced(SampleRate_INCLUDE_DIR SampleRate_LIBRARY)

find_package_handle_standard_args(SampleRate
    REQUIRED_VARS SampleRate_LIBRARY SampleRate_INCLUDE_DIR
    REASON_FAILURE_MESSAGE "Debian: 'scripts/setup run', for Windows 'scripts/setup windows', elsewhere as vcpkg.json says.")

if(SampleRate_FOUND AND NOT TARGET SampleRate::samplerate)
    add_library(SampleRate::samplerate UNKNOWN IMPORTED)
    set_target_properties(SampleRate::samplerate PROPERTIES
        IMPORTED_LOCATION "${SampleRate_LIBRARY}"
        INTERFACE_INCLUDE_DIRECTORIES "${SampleRate_INCLUDE_DIR}")
endif()
