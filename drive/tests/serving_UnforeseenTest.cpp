#include "control/ControlClient.h"
#include "mounting/DirectBackEnd.h"
#include "platform/Files.h"
#include "serving/Server.h"
#include "testing/DriveHost.h"
#include "testing/TestVolume.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <stdexcept>
#include <thread>

namespace ferrobank::drive::testing {
namespace {

using namespace std::chrono_literals;

/// The real one, but its first unmounts fail as no back end should.
class StumblingBackEnd : public BackEnd {
public:
    StumblingBackEnd(const Paths& paths, std::atomic<int>& stumbles)
        : _real(paths.image, paths.drive, paths.runtime / "top-level"), _stumbles(stumbles)
    {}

    [[nodiscard]] std::string_view name() const override { return _real.name(); }

    [[nodiscard]] bool mountsAtHome() const override { return _real.mountsAtHome(); }

    void prepare(const std::optional<LoopDevice>& existing, Interaction interaction) override
    {
        _real.prepare(existing, interaction);
    }

    Volume attach(const std::optional<LoopDevice>& existing, Interaction interaction) override
    {
        return _real.attach(existing, interaction);
    }

    Volume attachReadOnly(Interaction interaction) override { return attach({}, interaction); }

    void detach(const Volume& volume) override
    {
        if (_stumbles > 0) {
            --_stumbles;
            throw std::out_of_range("no such key");
        }
        _real.detach(volume);
    }

private:
    DirectBackEnd _real;
    std::atomic<int>& _stumbles;
};

TEST(Unforeseen, requestThatFailsSoIsAnsweredAndTheDriveIsServedOn)
{
    if (!volumesUnavailable().empty()) {
        GTEST_SKIP() << volumesUnavailable();
    }
    const DriveHost host;
    host.makeSmallStore();
    const Paths& paths = host.paths();
    std::atomic<int> stumbles = 1;
    std::string ended;
    const std::jthread serving([&] {
        try {
            Server server(paths, Log(paths.log), {.path = "/no/such/program", .identity = {}, .version = "1"},
                          Locks::tryTake(paths).value(), std::make_unique<StumblingBackEnd>(paths, stumbles));
            server.run(FileDescriptor());
        } catch (const std::exception& error) {
            ended = error.what();
        }
    });
    const auto ping = [&] { return ask(paths.socket(), {.operation = Operation::Ping}, 5s).has_value(); };
    ASSERT_TRUE(waitUntil([&] { return host.isMounted() && ping(); })) << ended << host.logText();

    const auto refused = ask(paths.socket(), {.operation = Operation::Stop}, 30s);
    ASSERT_TRUE(refused) << ended;
    EXPECT_FALSE(refused->ok);
    EXPECT_EQ(refused->text, "no such key");
    EXPECT_TRUE(host.isMounted());
    EXPECT_TRUE(ping());
    EXPECT_NE(host.logText().find("Something unforeseen happened: no such key."), std::string::npos);

    const auto stopped = ask(paths.socket(), {.operation = Operation::Stop}, 30s);
    ASSERT_TRUE(stopped);
    EXPECT_TRUE(stopped->ok) << stopped->text;
    EXPECT_FALSE(host.isMounted());
    EXPECT_TRUE(ask(paths.socket(), {.operation = Operation::Quit}, 10s));
}

} // namespace
} // namespace ferrobank::drive::testing
