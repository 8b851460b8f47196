drive_test(NAME figures_unit
    SOURCES
        figures_ContentHashTest.cpp
        figures_DeviceCountersTest.cpp
        figures_DisplayTextTest.cpp
        figures_PacingTest.cpp
        figures_TreeWalkTest.cpp
    LINK drive_figures
    LABELS unit)
drive_test(NAME figures_on_drive
    SOURCES figures_OnDriveTest.cpp
    LINK drive_figures
    LABELS component)
