// Runs one sharing pass over a folder and prints what it took as key=value lines, for the benchmark.
// Usage: scan-once ROOT INDEX-FOLDER SHARE-OF-A-CORE

#include "sharing/Scanner.h"

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>

namespace {

/// Largest resident size of this very program in KiB; the one of getrusage is inherited from whoever started
/// it.
long largestMemory()
{
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        if (word == "VmHWM:") {
            long size = 0;
            status >> size;
            return size;
        }
    }
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    using namespace ferrobank::drive;
    if (argc != 4) {
        std::cerr << "usage: scan-once ROOT INDEX-FOLDER SHARE-OF-A-CORE\n";
        return 2;
    }
    ScanSettings settings;
    settings.root = argv[1];
    settings.indexFolder = argv[2];
    settings.processorShare = std::atof(argv[3]);
    settings.quietSeconds = 0;
    const SharingResult result = shareRepeatedData(settings, {});
    std::cout << "seconds=" << result.duration.count() << "\nprocessor=" << result.processor.count()
              << "\nmemory_kib=" << largestMemory() << "\nfiles=" << result.usage.files
              << "\nvolume_used=" << result.usage.bytes << "\nhashed=" << result.filesHashed
              << "\nshared_files=" << result.filesShared << "\nshared_bytes=" << result.bytesShared
              << "\nrefused=" << result.filesRefused << "\n";
    if (!result.error.empty()) {
        std::cerr << result.error << "\n";
        return 1;
    }
    return 0;
}
