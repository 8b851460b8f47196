#pragma once

/// Runs the application until the user quits, and returns the process's exit status: what libferrobank-app is
/// loaded for. A second start hands its wish to the running one, with 0 once that was carried out.
extern "C" __attribute__((visibility("default"))) int ferrobankApplication(int argc, char** argv);
