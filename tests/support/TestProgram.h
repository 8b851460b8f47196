#pragma once

#include <QObject>

#include <functional>
#include <memory>
#include <string_view>

namespace ferrobank::testing {

/// What a test class needs around it.
enum class Application {
    None,
    Core,    ///< an event loop
    Windows, ///< windows and widgets that are drawn into memory
};

/// One program holds the test classes of a layer, because one link and one run of moc cost less than fifty.
/// Each class still runs in a process of its own:  unit-tests CheckItemTest [function...]. Put
/// FERROBANK_TEST(Class), or one of its two sisters, at the end of a test's file.
class RegisteredTest {
public:
    /// The name may be qualified; the last part is what people type.
    RegisteredTest(std::string_view name, Application application,
                   std::function<std::unique_ptr<QObject>()> make);
};

} // namespace ferrobank::testing

#define FERROBANK_REGISTER_TEST(Class, application)                                                          \
    namespace {                                                                                              \
    const ferrobank::testing::RegisteredTest registeredTest(#Class,                                          \
                                                            ferrobank::testing::Application::application,    \
                                                            [] { return std::make_unique<Class>(); });       \
    }

#define FERROBANK_TEST(Class) FERROBANK_REGISTER_TEST(Class, Core)
#define FERROBANK_TEST_WITHOUT_APPLICATION(Class) FERROBANK_REGISTER_TEST(Class, None)
#define FERROBANK_TEST_WITH_WINDOWS(Class) FERROBANK_REGISTER_TEST(Class, Windows)
