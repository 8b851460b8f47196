#include "commands/CommandLine.h"

int main(int argumentCount, char** arguments)
{
    return ferrobank::drive::runCommandLine(argumentCount, arguments);
}
