# The built program on a small disk of its own: needs root and loop devices, and says so where it skips.
drive_test(NAME tool_serve SOURCES tool_ServeTest.cpp LINK drive_control drive_state LABELS loop TIMEOUT 600)
drive_test(NAME tool_guards SOURCES tool_GuardsTest.cpp LABELS loop TIMEOUT 600)
drive_test(NAME tool_uninstall SOURCES tool_UninstallTest.cpp LABELS loop TIMEOUT 600)
drive_test(NAME tool_space SOURCES tool_SpaceTest.cpp LABELS "loop;long" TIMEOUT 900)
drive_test(NAME tool_hostfull SOURCES tool_HostFullTest.cpp LABELS "loop;long" TIMEOUT 900)
drive_test(NAME tool_powercut SOURCES tool_PowerCutTest.cpp LABELS "loop;long" TIMEOUT 900)

# The same beside the system services that it talks to, real ones in namespaces of their own.
function(drive_system_test name)
    add_test(NAME drive.${name} COMMAND ${ARGN})
    set_tests_properties(drive.${name} PROPERTIES
        SKIP_RETURN_CODE 77 TIMEOUT 300 LABELS "drive;loop;system" RESOURCE_LOCK drive_system)
endfunction()

set(system_tests ${CMAKE_CURRENT_SOURCE_DIR}/system)
set(installed_tool /usr/lib/ferrobank/Ferrobank.app/Contents/Helpers/ferrobank)
drive_system_test(system_udisks
    ${system_tests}/with-udisks.sh -- ${system_tests}/udisks-user.sh $<TARGET_FILE:ferrobank>)
foreach(session IN ITEMS remote none)
    drive_system_test(system_udisks_${session}
        ${system_tests}/with-udisks.sh --session ${session} --
        ${system_tests}/udisks-remote.sh $<TARGET_FILE:ferrobank>)
endforeach()
drive_system_test(system_fstab
    ${system_tests}/with-udisks.sh --session remote
    --policy ${PROJECT_BINARY_DIR}/polkit/org.ferrobank.Ferrobank.fstab.policy
    --install $<TARGET_FILE:ferrobank>=${installed_tool} -- ${system_tests}/fstab-user.sh ${installed_tool})
drive_system_test(system_login ${system_tests}/login-manager.sh $<TARGET_FILE:ferrobank>)
