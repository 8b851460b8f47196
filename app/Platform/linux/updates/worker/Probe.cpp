#include "Platform/linux/updates/worker/Probe.h"

#include "Platform/linux/updates/worker/WorkerContext.h"

#include <dlfcn.h>

#include <array>
#include <cstdio>

namespace ferrobank::updates {

int probeOwnBundle()
{
    std::error_code error;
    const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", error);
    const std::filesystem::path bundle = self.parent_path().parent_path().parent_path();
    const std::array<const char*, 2> libraries{"libferrobank-app.so", "libferrobank-window.so"};
    for (const char* library : libraries) {
        if (!::dlopen((bundle / "Contents/Linux" / library).c_str(), RTLD_NOW | RTLD_LOCAL)) {
            std::fprintf(stderr, "%s\n", ::dlerror());
            return 1;
        }
    }
    std::printf("Ferrobank %s\n", configurationOf(bundle).version.toUtf8().constData());
    return 0;
}

} // namespace ferrobank::updates
