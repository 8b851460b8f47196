# Pure pieces and pieces with files of their own: no privilege needed.
drive_test(NAME unit_platform
    SOURCES platform_FilesTest.cpp platform_FileLockTest.cpp platform_LogTest.cpp platform_PathsTest.cpp
        platform_ProgramTest.cpp
    LINK drive_platform LABELS unit)
drive_test(NAME unit_state SOURCES state_StateTest.cpp state_WorkTest.cpp LINK drive_state LABELS unit)
drive_test(NAME unit_serving SOURCES serving_ServerTest.cpp LINK drive_serving LABELS unit)
drive_test(NAME unit_control SOURCES control_ControlTest.cpp LINK drive_control LABELS unit)
drive_test(NAME unit_mounting
    SOURCES mounting_HomeEntryTest.cpp mounting_LoopDevicesTest.cpp
        mounting_MountTableTest.cpp mounting_OldFstabLinesTest.cpp mounting_VolumeUsersTest.cpp
    LINK drive_mounting LABELS unit)
drive_test(NAME unit_store SOURCES store_StoreTest.cpp LINK drive_store LABELS unit)
drive_test(NAME unit_space SOURCES space_SpacePolicyTest.cpp LINK drive_space LABELS unit)
drive_test(NAME unit_helper SOURCES helper_MountHelperTest.cpp LINK drive_helper LABELS unit)
drive_test(NAME unit_commands
    SOURCES commands_CheckRowTest.cpp commands_CommandLineTest.cpp
        commands_StatusTextTest.cpp
    LINK drive_commands LABELS unit)
target_compile_definitions(unit_commands PRIVATE
    "FERROBANK_MANUAL_PAGE=\"${PROJECT_SOURCE_DIR}/../packaging/man/ferrobank.1\""
    "FERROBANK_COMPLETIONS=\"${PROJECT_SOURCE_DIR}/../packaging/completions\"")
drive_test(NAME serving_on_drive
    SOURCES serving_HousekeepingTest.cpp serving_UnforeseenTest.cpp testing/ScanVolume.cpp
    LINK drive_serving LABELS component)
drive_test(NAME space_on_drive
    SOURCES space_GuardFileTest.cpp space_SpaceKeeperTest.cpp testing/ScanVolume.cpp
    LINK drive_space drive_sharing LABELS component)
drive_test(NAME unit_words SOURCES words_SentencesTest.cpp LINK ferrobank-base LABELS unit)
