#include "support/TestProgram.h"

#include <QApplication>
#include <QTest>

#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace ferrobank::testing {

namespace {

struct Entry {
    Application application;
    std::function<std::unique_ptr<QObject>()> make;
};

std::map<std::string, Entry>& registry()
{
    static std::map<std::string, Entry> tests;
    return tests;
}

std::unique_ptr<QCoreApplication> makeApplication(Application kind, int& argc, char** argv)
{
    switch (kind) {
    case Application::None:
        return nullptr;
    case Application::Core:
        return std::make_unique<QCoreApplication>(argc, argv);
    case Application::Windows:
        break;
    }
    qputenv("QT_QPA_PLATFORM", "offscreen");
    auto application = std::make_unique<QApplication>(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    return application;
}

int usage(const char* program)
{
    std::fprintf(stderr, "usage: %s TEST [function...]; its tests:\n", program);
    for (const auto& [name, entry] : registry()) {
        std::fprintf(stderr, "  %s\n", name.c_str());
    }
    return 2;
}

} // namespace

RegisteredTest::RegisteredTest(std::string_view name, Application application,
                               std::function<std::unique_ptr<QObject>()> make)
{
    const auto colon = name.rfind(':');
    registry().emplace(colon == std::string_view::npos ? name : name.substr(colon + 1),
                       Entry{application, std::move(make)});
}

} // namespace ferrobank::testing

int main(int argc, char** argv)
{
    using namespace ferrobank::testing;
    const auto found = argc < 2 ? registry().end() : registry().find(argv[1]);
    if (found == registry().end()) {
        return usage(argv[0]);
    }
    // The test's name goes, so that the rest reads like the command line of a single test.
    std::vector<char*> arguments{argv[0]};
    arguments.insert(arguments.end(), argv + 2, argv + argc);
    int count = int(arguments.size());
    arguments.push_back(nullptr);
    const std::unique_ptr<QCoreApplication> application =
        makeApplication(found->second.application, count, arguments.data());
    const std::unique_ptr<QObject> test = found->second.make();
    return QTest::qExec(test.get(), count, arguments.data());
}
