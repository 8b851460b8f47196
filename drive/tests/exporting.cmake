drive_test(NAME exporting_unit
    SOURCES exporting_UnitTest.cpp
    LINK drive_exporting
    LABELS unit)
drive_test(NAME exporting_on_drive
    SOURCES
        exporting_CopyTest.cpp
        exporting_DestinationTest.cpp
        exporting_FaultsTest.cpp
        exporting_LateChangesTest.cpp
        exporting_ResumeTest.cpp
        testing/ExportVolume.cpp
    LINK drive_exporting
    LABELS component
    TIMEOUT 600)

# Copying a hundred thousand files takes as long as all the others together: a test of its own, beside which they run.
set_tests_properties(
    ${FERROBANK_TEST_PREFIX}drive.exporting_on_drive PROPERTIES ENVIRONMENT "GTEST_FILTER=-ManyFiles.*")
if(NOT FERROBANK_SANITIZE)
    add_test(NAME drive.exporting_many_files COMMAND exporting_on_drive)
    set_tests_properties(
        drive.exporting_many_files
        PROPERTIES ENVIRONMENT "GTEST_FILTER=ManyFiles.*" SKIP_RETURN_CODE 77 TIMEOUT 600 LABELS "drive;loop")
endif()
