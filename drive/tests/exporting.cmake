drive_test(NAME exporting_unit
    SOURCES exporting_UnitTest.cpp
    LINK drive_exporting
    LABELS unit)
drive_test(NAME exporting_on_drive
    SOURCES
        exporting_CopyTest.cpp
        exporting_DestinationTest.cpp
        exporting_FaultsTest.cpp
        testing/ExportVolume.cpp
    LINK drive_exporting
    LABELS component
    TIMEOUT 600)
