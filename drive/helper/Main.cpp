#include "helper/HelperCommand.h"

int main(int argumentCount, char** arguments)
{
    return ferrobank::drive::runMountHelper(argumentCount, arguments);
}
