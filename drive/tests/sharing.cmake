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
        sharing_ReadingPassTest.cpp
        sharing_WholeFilesTest.cpp
        testing/ScanVolume.cpp
    LINK drive_sharing
    LABELS component
    TIMEOUT 300)
