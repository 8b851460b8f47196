# The built program on a small disk of its own: needs root and loop devices, and says so where it skips.
drive_test(NAME tool_serve SOURCES tool_ServeTest.cpp LABELS loop TIMEOUT 300)
drive_test(NAME tool_guards SOURCES tool_GuardsTest.cpp LABELS loop TIMEOUT 300)
drive_test(NAME tool_uninstall SOURCES tool_UninstallTest.cpp LABELS loop TIMEOUT 300)
