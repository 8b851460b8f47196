# The built program on a small disk of its own: needs root and loop devices, and says so where it skips.
drive_test(NAME tool_serve SOURCES tool_ServeTest.cpp LINK drive_control drive_state LABELS loop TIMEOUT 600)
drive_test(NAME tool_guards SOURCES tool_GuardsTest.cpp LABELS loop TIMEOUT 600)
drive_test(NAME tool_integrity SOURCES tool_IntegrityTest.cpp LABELS loop TIMEOUT 600)
drive_test(NAME tool_uninstall SOURCES tool_UninstallTest.cpp LABELS loop TIMEOUT 600)
drive_test(NAME tool_deletion SOURCES tool_DeletionTest.cpp LINK drive_state LABELS loop TIMEOUT 600)
drive_test(NAME tool_space SOURCES tool_SpaceTest.cpp LINK drive_figures LABELS "loop;long" TIMEOUT 900)
drive_test(NAME tool_hostfull SOURCES tool_HostFullTest.cpp LABELS "loop;long" TIMEOUT 900)
drive_test(NAME tool_powercut SOURCES tool_PowerCutTest.cpp LABELS "loop;long" TIMEOUT 900)

# The same beside the system services that it talks to, real ones in namespaces of their own.
function(drive_system_test name)
    add_test(NAME drive.${name} COMMAND ${ARGN})
    set_tests_properties(drive.${name} PROPERTIES
        SKIP_RETURN_CODE 77 TIMEOUT 300 LABELS "drive;loop;system" RESOURCE_LOCK drive_system)
endfunction()

set(system_tests ${CMAKE_CURRENT_SOURCE_DIR}/system)
set(installed /usr/lib/ferrobank/Ferrobank.app/Contents/Helpers)
drive_system_test(system_udisks
    ${system_tests}/with-udisks.sh -- ${system_tests}/udisks-user.sh $<TARGET_FILE:ferrobank>)
foreach(session IN ITEMS remote none)
    drive_system_test(system_udisks_${session}
        ${system_tests}/with-udisks.sh --session ${session} --
        ${system_tests}/udisks-remote.sh $<TARGET_FILE:ferrobank>)
endforeach()
set(with_helper
    --policy ${PROJECT_BINARY_DIR}/polkit/org.ferrobank.Ferrobank.mounting.policy
    --install $<TARGET_FILE:ferrobank>=${installed}/ferrobank
    --install $<TARGET_FILE:ferrobank-drive>=${installed}/ferrobank-drive
    --install $<TARGET_FILE:ferrobank-mount-helper>=${installed}/ferrobank-mount-helper)
foreach(session IN ITEMS remote none)
    drive_system_test(system_mount_helper_${session}
        ${system_tests}/with-udisks.sh --session ${session} ${with_helper}
        --allow org.ferrobank.Ferrobank.allow-mounting -- ${system_tests}/mount-helper-user.sh
        ${installed}/ferrobank ${installed}/ferrobank-mount-helper)
endforeach()
drive_system_test(system_mount_attacks
    ${system_tests}/with-udisks.sh --session none --as root ${with_helper} --
    ${system_tests}/mount_attacks.py ${installed}/ferrobank-mount-helper)
drive_system_test(system_package_scripts
    ${system_tests}/with-udisks.sh --session none --as root ${with_helper} --
    ${system_tests}/package_scripts.py ${PROJECT_SOURCE_DIR}/../packaging/debian ${installed}/ferrobank-mount-helper)
drive_system_test(system_login ${system_tests}/login-manager.sh $<TARGET_FILE:ferrobank>)
