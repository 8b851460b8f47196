#include "mounting/UdisksBackEnd.h"

#include "mounting/FilesSubvolume.h"
#include "mounting/LoopSetup.h"
#include "mounting/MountHelper.h"
#include "mounting/VolumeUsers.h"
#include "platform/Failure.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <initializer_list>
#include <thread>
#include <utility>

namespace ferrobank::drive {

namespace {

constexpr const char* kManagerPath = "/org/freedesktop/UDisks2/Manager";
constexpr const char* kDevicesPath = "/org/freedesktop/UDisks2/block_devices/";
constexpr const char* kManager = "org.freedesktop.UDisks2.Manager";
constexpr const char* kLoop = "org.freedesktop.UDisks2.Loop";
constexpr const char* kFilesystem = "org.freedesktop.UDisks2.Filesystem";
constexpr const char* kPlainOptions = "noatime,discard=sync";
constexpr unsigned kSilentSeconds = 20;
constexpr unsigned kAskingSeconds = 60;
constexpr std::chrono::seconds kProbeLimit{5};
constexpr std::chrono::milliseconds kProbeStep{50};

Failure failureOf(const BusError& error, const std::string& attempt)
{
    if (error.isOneOf("org.freedesktop.UDisks2.Error.NotAuthorized")) {
        return Failure(
            "This login session may not mount the drive. Log in at this computer's own screen, or " +
                mountingAdvice(),
            "not-authorized");
    }
    if (error.isOneOf("org.freedesktop.DBus.Error.ServiceUnknown") ||
        error.isOneOf("org.freedesktop.DBus.Error.NameHasNoOwner"))
    {
        return noUdisks();
    }
    if (!kernelHasBtrfs()) {
        return Failure("This system's kernel has no Btrfs support.", "no-btrfs");
    }
    return Failure(attempt + ": " + error.text, "udisks");
}

/// One conversation with udisks2 about one loop device.
class Conversation {
public:
    explicit Conversation(Interaction interaction) : _bus(openSystemBus()), _interaction(interaction)
    {
        if (!_bus) {
            throw failureOf({.name = "org.freedesktop.DBus.Error.ServiceUnknown", .text = {}}, {});
        }
    }

    enum class Access { ReadWrite, ReadOnly };

    std::string setUpLoop(const std::filesystem::path& image, Access access = Access::ReadWrite)
    {
        const bool readOnly = access == Access::ReadOnly;
        const FileDescriptor file(
            ::open(image.c_str(), (readOnly ? O_RDONLY : O_RDWR) | O_CLOEXEC | O_NOFOLLOW));
        if (!file) {
            throw systemFailure("The drive's store could not be opened", errno);
        }
        const BusMessage call = newCall(kManagerPath, kManager, "LoopSetup");
        ::sd_bus_message_append(call.get(), "h", file.get());
        appendOptions(call, {{"no-part-scan", true}, {"read-only", readOnly}}, {});
        const BusMessage answer = send(call, "The drive's store could not be attached");
        const char* path = nullptr;
        if (::sd_bus_message_read(answer.get(), "o", &path) < 0) {
            throw Failure("udisks2 gave an answer that cannot be understood.", "udisks");
        }
        return path;
    }

    /// udev must have looked at the new device before it can be mounted.
    void awaitFilesystem(const std::string& device)
    {
        const auto limit = std::chrono::steady_clock::now() + kProbeLimit;
        for (;;) {
            sd_bus_message* answer = nullptr;
            const int result = ::sd_bus_get_property(_bus.get(), UdisksBackEnd::kService, device.c_str(),
                                                     kFilesystem, "MountPoints", nullptr, &answer, "aay");
            ::sd_bus_message_unref(answer);
            if (result >= 0) {
                return;
            }
            if (std::chrono::steady_clock::now() > limit) {
                throw Failure("udisks2 does not recognise the drive's store as a volume.", "udisks");
            }
            std::this_thread::sleep_for(kProbeStep);
        }
    }

    std::string mount(const std::string& device, const std::string& options)
    {
        awaitFilesystem(device);
        const BusMessage call = newCall(device, kFilesystem, "Mount");
        appendOptions(call, {}, {{"fstype", "btrfs"}, {"options", options}});
        const BusMessage answer = send(call, "The drive could not be mounted");
        const char* path = nullptr;
        if (::sd_bus_message_read(answer.get(), "s", &path) < 0) {
            throw Failure("udisks2 gave an answer that cannot be understood.", "udisks");
        }
        return path;
    }

    /// Only once it is mounted: an unused device with this flag vanishes at once.
    void letGoWhenUnmounted(const std::string& device)
    {
        const BusMessage call = newCall(device, kLoop, "SetAutoclear");
        ::sd_bus_message_append(call.get(), "b", 1);
        appendOptions(call, {}, {});
        send(call, "The drive could not be mounted");
    }

    /// False when it is in use.
    bool unmount(const std::string& device)
    {
        const BusMessage call = newCall(device, kFilesystem, "Unmount");
        appendOptions(call, {}, {});
        const BusReply reply = callAndWait(_bus, call, seconds());
        if (!reply.error) {
            return true;
        }
        if (reply.error->isOneOf("org.freedesktop.UDisks2.Error.DeviceBusy")) {
            return false;
        }
        throw failureOf(*reply.error, "The drive could not be unmounted");
    }

    void deleteLoop(const std::string& device)
    {
        const BusMessage call = newCall(device, kLoop, "Delete");
        appendOptions(call, {}, {});
        // After a failed mount; the failure that led here is the one to report.
        static_cast<void>(callAndWait(_bus, call, seconds()));
    }

private:
    using Flags = std::initializer_list<std::pair<const char*, bool>>;
    using Texts = std::initializer_list<std::pair<const char*, std::string>>;

    [[nodiscard]] unsigned seconds() const
    {
        return _interaction == Interaction::Silent ? kSilentSeconds : kAskingSeconds;
    }

    BusMessage newCall(const std::string& path, const char* interface, const char* member)
    {
        sd_bus_message* call = nullptr;
        if (::sd_bus_message_new_method_call(_bus.get(), &call, UdisksBackEnd::kService, path.c_str(),
                                             interface, member) < 0)
        {
            throw Failure("udisks2 cannot be asked.", "udisks");
        }
        ::sd_bus_message_set_allow_interactive_authorization(call,
                                                             _interaction == Interaction::MayAsk ? 1 : 0);
        return BusMessage(call);
    }

    void appendOptions(const BusMessage& call, Flags flags, Texts texts) const
    {
        ::sd_bus_message_open_container(call.get(), 'a', "{sv}");
        const int silent = _interaction == Interaction::Silent ? 1 : 0;
        ::sd_bus_message_append(call.get(), "{sv}", "auth.no_user_interaction", "b", silent);
        for (const auto& [name, value] : flags) {
            ::sd_bus_message_append(call.get(), "{sv}", name, "b", value ? 1 : 0);
        }
        for (const auto& [name, value] : texts) {
            ::sd_bus_message_append(call.get(), "{sv}", name, "s", value.c_str());
        }
        ::sd_bus_message_close_container(call.get());
    }

    BusMessage send(const BusMessage& call, const std::string& attempt)
    {
        BusReply reply = callAndWait(_bus, call, seconds());
        if (reply.error) {
            throw failureOf(*reply.error, attempt);
        }
        return std::move(reply.message);
    }

    Bus _bus;
    Interaction _interaction;
};

std::string objectOf(const std::string& loop)
{
    return kDevicesPath + std::filesystem::path(loop).filename().string();
}

std::string deviceOf(const std::string& object)
{
    return "/dev/" + std::filesystem::path(object).filename().string();
}

} // namespace

Failure noUdisks()
{
    return Failure("This system has no udisks2 service. Install the package udisks2, or " + mountingAdvice(),
                   "no-udisks");
}

UdisksBackEnd::UdisksBackEnd(std::filesystem::path image) : _image(std::move(image)) {}

void UdisksBackEnd::prepare(const std::optional<LoopDevice>& existing, Interaction interaction)
{
    Conversation udisks(interaction);
    const std::string object = existing ? objectOf(existing->device) : udisks.setUpLoop(_image);
    const std::vector<MountEntry> mounted = otherMounts(deviceOf(object), readMountTable());
    std::string topLevel = mounted.empty() ? std::string() : mounted.front().mountPoint;
    try {
        if (topLevel.empty()) {
            topLevel = udisks.mount(object, kPlainOptions);
        }
        ensureFilesSubvolume(topLevel, ::geteuid(), ::getegid());
        udisks.letGoWhenUnmounted(object);
    } catch (const Failure&) {
        if (topLevel.empty()) {
            udisks.deleteLoop(object);
        }
        throw;
    }
    if (!udisks.unmount(object)) {
        throw Failure(busySentence(usersOf(topLevel)), "busy");
    }
    awaitLoopGone(deviceOf(object));
}

Volume UdisksBackEnd::attach(const std::optional<LoopDevice>& existing, Interaction interaction)
{
    Conversation udisks(interaction);
    const std::string object = existing ? objectOf(existing->device) : udisks.setUpLoop(_image);
    Volume volume{.loop = deviceOf(object), .mountPoint = {}};
    try {
        volume.mountPoint = udisks.mount(object, std::string("noatime,") + kMountOptions);
    } catch (const Failure&) {
        if (!existing) {
            udisks.deleteLoop(object);
        }
        throw;
    }
    udisks.letGoWhenUnmounted(object);
    return volume;
}

Volume UdisksBackEnd::attachReadOnly(Interaction interaction)
{
    Conversation udisks(interaction);
    const std::string object = udisks.setUpLoop(_image, Conversation::Access::ReadOnly);
    Volume volume{.loop = deviceOf(object), .mountPoint = {}, .readOnly = true};
    try {
        volume.mountPoint = udisks.mount(object, std::string("ro,noatime,") + kFilesOption);
    } catch (const Failure&) {
        udisks.deleteLoop(object);
        throw;
    }
    udisks.letGoWhenUnmounted(object);
    return volume;
}

void UdisksBackEnd::detach(const Volume& volume)
{
    Conversation udisks(Interaction::Silent);
    if (!udisks.unmount(objectOf(volume.loop))) {
        throw Failure(busySentence(usersOf(volume.mountPoint)), "busy");
    }
    if (otherMounts(volume.loop, readMountTable()).empty()) {
        awaitLoopGone(volume.loop);
    }
}

} // namespace ferrobank::drive
