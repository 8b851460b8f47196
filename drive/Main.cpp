#include "commands/CommandLine.h"
#include "platform/ToolPrograms.h"

#include <sys/prctl.h>

int main(int argumentCount, char** arguments)
{
    // People know one program, and lists of processes should show that one.
    ::prctl(PR_SET_NAME, ferrobank::drive::kFrontProgram);
    return ferrobank::drive::runCommandLine(argumentCount, arguments);
}
