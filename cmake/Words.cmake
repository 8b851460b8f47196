# The languages that the application speaks besides English, and how their catalogues come into the bundle.

set(FERROBANK_LANGUAGES ar de es fr ja zh_CN)

find_program(FERROBANK_LRELEASE NAMES lrelease-qt6 lrelease HINTS "/usr/lib/qt6/bin" REQUIRED)

# ferrobank_catalogue(FROM file.ts NAME name): Contents/Resources/translations/name.qm
function(ferrobank_catalogue)
    cmake_parse_arguments(PARSE_ARGV 0 arg "" "FROM;NAME" "")
    cmake_path(ABSOLUTE_PATH arg_FROM)
    set_property(GLOBAL APPEND PROPERTY FERROBANK_CATALOGUE_SOURCES "${arg_FROM}")
    set_property(GLOBAL APPEND PROPERTY FERROBANK_CATALOGUES
                                        "${FERROBANK_CONTENTS}/Resources/translations/${arg_NAME}.qm")
endfunction()
