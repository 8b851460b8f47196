# The application is one folder, the same on every system; nothing outside it is needed at run time but libraries.

set(FERROBANK_BUNDLE_ID "org.ferrobank.Ferrobank")
set(FERROBANK_BUNDLE "${CMAKE_BINARY_DIR}/Ferrobank.app")
set(FERROBANK_CONTENTS "${FERROBANK_BUNDLE}/Contents")
set(FERROBANK_EXECUTABLE_DIR "${FERROBANK_CONTENTS}/Linux")

# Puts a target's binary beside the executable and lets it find its sisters there, wherever the folder is moved.
function(ferrobank_bundle_binary target)
    set_target_properties(
        ${target}
        PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${FERROBANK_EXECUTABLE_DIR}"
                   LIBRARY_OUTPUT_DIRECTORY "${FERROBANK_EXECUTABLE_DIR}"
                   BUILD_RPATH "$ORIGIN"
                   BUILD_RPATH_USE_ORIGIN ON
                   INSTALL_RPATH "$ORIGIN")
endfunction()

# Copies one file into the bundle whenever it changes: ferrobank_bundle_file(FROM source TO folder/in/Contents/name)
function(ferrobank_bundle_file)
    cmake_parse_arguments(PARSE_ARGV 0 arg "" "FROM;TO" "")
    cmake_path(ABSOLUTE_PATH arg_FROM)
    set_property(GLOBAL APPEND PROPERTY FERROBANK_BUNDLE_SOURCES "${arg_FROM}")
    set_property(GLOBAL APPEND PROPERTY FERROBANK_BUNDLE_FILES "${FERROBANK_CONTENTS}/${arg_TO}")
endfunction()

# Call once, after every ferrobank_bundle_file(): only the folder that has the target knows how its files are made.
function(ferrobank_bundle_complete)
    get_property(sources GLOBAL PROPERTY FERROBANK_BUNDLE_SOURCES)
    get_property(files GLOBAL PROPERTY FERROBANK_BUNDLE_FILES)
    foreach(source file IN ZIP_LISTS sources files)
        add_custom_command(
            OUTPUT "${file}"
            COMMAND "${CMAKE_COMMAND}" -E copy "${source}" "${file}"
            DEPENDS "${source}"
            VERBATIM)
    endforeach()
    get_property(sources GLOBAL PROPERTY FERROBANK_CATALOGUE_SOURCES)
    get_property(catalogues GLOBAL PROPERTY FERROBANK_CATALOGUES)
    foreach(source catalogue IN ZIP_LISTS sources catalogues)
        add_custom_command(
            OUTPUT "${catalogue}"
            COMMAND "${FERROBANK_LRELEASE}" -silent "${source}" -qm "${catalogue}"
            DEPENDS "${source}"
            VERBATIM)
    endforeach()
    add_custom_target(bundle-files ALL DEPENDS ${files} ${catalogues})
    add_dependencies(Ferrobank bundle-files)
endfunction()
