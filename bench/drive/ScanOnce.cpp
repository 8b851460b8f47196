// Runs one sharing pass over a folder and prints what it took as key=value lines, for the benchmark.
// Usage: scan-once ROOT INDEX-FOLDER SHARE-OF-A-CORE

#include "sharing/Scanner.h"

#include <sys/resource.h>

#include <cstdlib>
#include <iostream>

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
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    std::cout << "seconds=" << result.duration.count() << "\nprocessor=" << result.processor.count()
              << "\nmemory_kib=" << usage.ru_maxrss << "\nfiles=" << result.usage.files
              << "\nvolume_used=" << result.usage.bytes << "\nhashed=" << result.filesHashed
              << "\nshared_files=" << result.filesShared << "\nshared_bytes=" << result.bytesShared
              << "\nrefused=" << result.filesRefused << "\n";
    if (!result.error.empty()) {
        std::cerr << result.error << "\n";
        return 1;
    }
    return 0;
}
