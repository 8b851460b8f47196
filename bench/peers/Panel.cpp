// A panel that draws nothing: it takes tray items of both kinds and says when each came, so that starts can
// be measured without the noise of drawing. Ends when its standard input does.
//
//   item <nanoseconds of the monotonic clock>     a status notifier item registered
//   dock <nanoseconds of the monotonic clock>     an X11 window asked to be embedded

#include <poll.h>
#include <systemd/sd-bus.h>
#include <time.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

constexpr auto kWatcher = "org.kde.StatusNotifierWatcher";
constexpr auto kItem = "org.kde.StatusNotifierItem";

void tell(const char* what)
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    std::printf("%s %lld\n", what, static_cast<long long>(now.tv_sec) * 1'000'000'000LL + now.tv_nsec);
    std::fflush(stdout);
}

int ignore(sd_bus_message*, void*, sd_bus_error*)
{
    return 0;
}

/// As a panel does with a new item: reads how it looks, and its menu.
void readItem(sd_bus* bus, const char* service, const char* path)
{
    sd_bus_call_method_async(bus, nullptr, service, path, "org.freedesktop.DBus.Properties", "GetAll", ignore,
                             nullptr, "s", kItem);
    sd_bus_call_method_async(bus, nullptr, service, "/MenuBar", "com.canonical.dbusmenu", "GetLayout", ignore,
                             nullptr, "iias", 0, -1, 0);
}

int registerItem(sd_bus_message* call, void*, sd_bus_error*)
{
    tell("item");
    const char* given = nullptr;
    sd_bus_message_read(call, "s", &given);
    const bool isPath = *given == '/';
    readItem(sd_bus_message_get_bus(call), isPath ? sd_bus_message_get_sender(call) : given,
             isPath ? given : "/StatusNotifierItem");
    return sd_bus_reply_method_return(call, "");
}

int registerHost(sd_bus_message* call, void*, sd_bus_error*)
{
    return sd_bus_reply_method_return(call, "");
}

int property(sd_bus*, const char*, const char*, const char* name, sd_bus_message* reply, void*, sd_bus_error*)
{
    if (std::strcmp(name, "RegisteredStatusNotifierItems") == 0) {
        return sd_bus_message_append(reply, "as", 0);
    }
    return std::strcmp(name, "ProtocolVersion") == 0 ? sd_bus_message_append(reply, "i", 0)
                                                     : sd_bus_message_append(reply, "b", 1);
}

const sd_bus_vtable kTable[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("RegisterStatusNotifierItem", "s", "", registerItem, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("RegisterStatusNotifierHost", "s", "", registerHost, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_PROPERTY("IsStatusNotifierHostRegistered", "b", property, 0, 0),
    SD_BUS_PROPERTY("RegisteredStatusNotifierItems", "as", property, 0, 0),
    SD_BUS_PROPERTY("ProtocolVersion", "i", property, 0, 0),
    SD_BUS_SIGNAL("StatusNotifierItemRegistered", "s", 0),
    SD_BUS_SIGNAL("StatusNotifierHostRegistered", "", 0),
    SD_BUS_VTABLE_END,
};

xcb_atom_t atom(xcb_connection_t* display, const std::string& name)
{
    const auto cookie = xcb_intern_atom(display, 0, static_cast<uint16_t>(name.size()), name.c_str());
    xcb_intern_atom_reply_t* reply = xcb_intern_atom_reply(display, cookie, nullptr);
    const xcb_atom_t result = reply == nullptr ? XCB_ATOM_NONE : reply->atom;
    std::free(reply);
    return result;
}

/// Becomes the tray of the older kind: the owner of its selection, which tells everybody so.
xcb_window_t ownTray(xcb_connection_t* display)
{
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(display)).data;
    const xcb_window_t window = xcb_generate_id(display);
    xcb_create_window(display, XCB_COPY_FROM_PARENT, window, screen->root, 0, 0, 200, 24, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    const xcb_atom_t selection = atom(display, "_NET_SYSTEM_TRAY_S0");
    xcb_set_selection_owner(display, window, selection, XCB_CURRENT_TIME);
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = screen->root;
    event.type = atom(display, "MANAGER");
    event.data.data32[0] = XCB_CURRENT_TIME;
    event.data.data32[1] = selection;
    event.data.data32[2] = window;
    xcb_send_event(display, 0, screen->root, XCB_EVENT_MASK_STRUCTURE_NOTIFY,
                   reinterpret_cast<const char*>(&event));
    xcb_flush(display);
    return window;
}

void embed(xcb_connection_t* display, xcb_window_t tray, xcb_window_t icon)
{
    tell("dock");
    xcb_reparent_window(display, icon, tray, 0, 0);
    xcb_map_window(display, icon);
    xcb_flush(display);
}

} // namespace

int main()
{
    sd_bus* bus = nullptr;
    xcb_connection_t* display = xcb_connect(nullptr, nullptr);
    if (sd_bus_open_user(&bus) < 0 || xcb_connection_has_error(display) != 0 ||
        sd_bus_add_object_vtable(bus, nullptr, "/StatusNotifierWatcher", kWatcher, kTable, nullptr) < 0 ||
        sd_bus_request_name(bus, kWatcher, 0) < 0)
    {
        std::fputs("There is no bus or no display for a panel.\n", stderr);
        return EXIT_FAILURE;
    }
    const xcb_window_t tray = ownTray(display);
    const xcb_atom_t opcode = atom(display, "_NET_SYSTEM_TRAY_OPCODE");
    tell("ready");
    for (;;) {
        while (sd_bus_process(bus, nullptr) > 0) {
        }
        sd_bus_flush(bus);
        while (xcb_generic_event_t* event = xcb_poll_for_event(display)) {
            const auto* message = reinterpret_cast<xcb_client_message_event_t*>(event);
            const bool asks = (event->response_type & 0x7F) == XCB_CLIENT_MESSAGE && message->type == opcode;
            if (asks && message->data.data32[1] == 0) {
                embed(display, tray, message->data.data32[2]);
            }
            std::free(event);
        }
        std::array<pollfd, 3> watched{{{STDIN_FILENO, POLLIN, 0},
                                       {sd_bus_get_fd(bus), POLLIN, 0},
                                       {xcb_get_file_descriptor(display), POLLIN, 0}}};
        poll(watched.data(), watched.size(), -1);
        if ((watched[0].revents & (POLLIN | POLLHUP)) != 0) {
            return EXIT_SUCCESS;
        }
    }
}
