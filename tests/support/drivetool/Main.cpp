#include "Player.h"
#include "PretendDrive.h"
#include "Scenario.h"

#include <exception>
#include <iostream>

int main(int argc, char** argv)
{
    try {
        const scripted::Arguments arguments(argv + 1, argv + argc);
        const auto scenario = scripted::Scenario::find();
        if (const auto* steps = scenario.answer(arguments)) {
            return scripted::play(*steps);
        }
        return scripted::PretendDrive(scenario.drive()).command(arguments);
    } catch (const std::exception& error) {
        std::cerr << "scripted drive tool: " << error.what() << '\n';
        return 70;
    }
}
