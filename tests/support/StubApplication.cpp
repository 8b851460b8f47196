// Stands in for the application's library: tells how it was called, and ends with a status of its own.

#include <cstdio>

extern "C" int ferrobankApplication(int argc, char** argv)
{
    for (int index = 1; index < argc; ++index) {
        std::printf("[%s]", argv[index]);
    }
    std::printf("\n");
    return 42;
}
