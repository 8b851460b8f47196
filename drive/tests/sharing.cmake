drive_test(NAME sharing_unit
    SOURCES
        sharing_FileTableTest.cpp
        sharing_IndexTest.cpp
        sharing_PolicyTest.cpp
        sharing_WindowTableTest.cpp
    LINK drive_sharing
    LABELS unit)
drive_test(NAME sharing_on_drive
    SOURCES
        sharing_BlocksTest.cpp
        sharing_FaultsTest.cpp
        sharing_FolderSumsTest.cpp
        sharing_ReadingPassTest.cpp
        sharing_WholeFilesTest.cpp
        testing/ScanVolume.cpp
    LINK drive_sharing
    LABELS component
    TIMEOUT 300)
if(FERROBANK_SANITIZE)
    # Fills a drive, which takes as long as all the others together.
    set_tests_properties(${FERROBANK_TEST_PREFIX}drive.sharing_on_drive
        PROPERTIES ENVIRONMENT "GTEST_FILTER=-Faults.fullDriveLosesNothing")
endif()
