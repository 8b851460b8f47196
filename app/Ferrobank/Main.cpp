// The one executable: a headless command, or the application. Links no Qt, so that a command is answered
// before any library of a user interface is loaded.

#include "Ferrobank/Headless.h"
#include "Platform/Bundle.h"
#include "Platform/VersionOnTrial.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>

namespace {

using ApplicationEntry = int (*)(int, char**);

/// A bus connection or a library must never end up as descriptor 0, 1 or 2, where output would go into it.
void fillStandardDescriptors()
{
    int descriptor = 0;
    do {
        descriptor = open("/dev/null", O_RDWR | O_NOCTTY);
    } while (descriptor >= 0 && descriptor <= 2);
    if (descriptor > 2) {
        close(descriptor);
    }
}

int runApplication(int argc, char** argv)
{
    const std::filesystem::path library =
        ferrobank::Bundle::main().executable().parent_path() / "libferrobank-app.so";
    // The absolute path keeps the search path of the environment out of it.
    void* application = dlopen(library.c_str(), RTLD_NOW);
    void* entry = application != nullptr ? dlsym(application, "ferrobankApplication") : nullptr;
    if (entry == nullptr) {
        std::fprintf(stderr, "Ferrobank cannot start: %s\n", dlerror());
        ferrobank::countStartOnTrial();
        return EXIT_FAILURE;
    }
    return reinterpret_cast<ApplicationEntry>(entry)(argc, argv);
}

} // namespace

int main(int argc, char** argv)
try {
    fillStandardDescriptors();
    if (argc >= 2) {
        if (const auto command = ferrobank::headlessCommand(argv[1])) {
            return ferrobank::runHeadless(*command, ferrobank::Service::shared(), stdout, stderr);
        }
    }
    ferrobank::settleVersionToRun(argv);
    return runApplication(argc, argv);
} catch (const std::exception& error) {
    std::fprintf(stderr, "Ferrobank cannot start: %s\n", error.what());
    return EXIT_FAILURE;
}
