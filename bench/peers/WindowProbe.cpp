// Opens and closes the window of a running program as a panel and a window manager do, and says when the
// window's picture was there: times are those of the display's own events, so nothing is polled.
//
//   window-probe PID SERVICE MENU-PATH ENTRY    SERVICE: of the tray item; ENTRY: number of the menu's entry
//
// Reads commands from standard input, answers each with one line, times in ms since the choice:
//
//   open             created <ms> mapped <ms> drawn <ms>   drawn: the first picture that fills the window
//   watch <seconds>  drawn <times> pixels <number>          what is drawn in the open window meanwhile
//   close            closed <ms>

#include <poll.h>
#include <systemd/sd-bus.h>
#include <time.h>
#include <unistd.h>
#include <xcb/damage.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <map>
#include <memory>
#include <string>

namespace {

constexpr double kLimit = 20'000;

struct Free {
    void operator()(void* memory) const { std::free(memory); }
};

template <typename T>
using Reply = std::unique_ptr<T, Free>;

double milliseconds()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

[[noreturn]] void fail(const char* words)
{
    std::fprintf(stderr, "window-probe: %s\n", words);
    std::exit(EXIT_FAILURE);
}

/// A top-level window that appeared after the choice, and what has been drawn in it.
struct Seen {
    double created = 0;
    double mapped = 0;
    double drawn = 0;
    int width = 0;
    int height = 0;
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;

    void add(const xcb_rectangle_t& area)
    {
        const bool first = right == 0;
        left = first ? area.x : std::min<int>(left, area.x);
        top = first ? area.y : std::min<int>(top, area.y);
        right = std::max<int>(right, area.x + area.width);
        bottom = std::max<int>(bottom, area.y + area.height);
        if (drawn == 0 && width > 0 && right - left >= width && bottom - top >= height) {
            drawn = milliseconds();
        }
    }
};

class Probe {
public:
    Probe(uint32_t pid, const char* service, const char* menu, int entry)
        : _pid(pid), _service(service), _menu(menu), _entry(entry), _display(xcb_connect(nullptr, nullptr))
    {
        if (xcb_connection_has_error(_display) != 0 || sd_bus_open_user(&_bus) < 0) {
            fail("there is no display or no bus");
        }
        _root = xcb_setup_roots_iterator(xcb_get_setup(_display)).data->root;
        const auto* damage = xcb_get_extension_data(_display, &xcb_damage_id);
        if (damage == nullptr || damage->present == 0) {
            fail("the display does not tell what is drawn");
        }
        _damage = damage->first_event;
        const auto version = xcb_damage_query_version(_display, 1, 1);
        Reply<xcb_damage_query_version_reply_t>(xcb_damage_query_version_reply(_display, version, nullptr));
        _pidAtom = atom("_NET_WM_PID");
        _protocols = atom("WM_PROTOCOLS");
        _delete = atom("WM_DELETE_WINDOW");
        listen(_root, XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY);
        xcb_flush(_display);
    }

    void open()
    {
        _seen.clear();
        _window = XCB_NONE;
        const double began = milliseconds();
        choose();
        wait(began + kLimit, [this] { return _window != XCB_NONE && _seen[_window].drawn > 0; });
        const Seen& seen = _seen[_window];
        std::printf("created %.2f mapped %.2f drawn %.2f\n", seen.created - began, seen.mapped - began,
                    seen.drawn - began);
    }

    void watch(double seconds)
    {
        _times = 0;
        _pixels = 0;
        const double end = milliseconds() + seconds * 1e3;
        while (milliseconds() < end) {
            takeEvents(end);
        }
        std::printf("drawn %ld pixels %ld\n", _times, _pixels);
    }

    void close()
    {
        const double began = milliseconds();
        xcb_client_message_event_t event{};
        event.response_type = XCB_CLIENT_MESSAGE;
        event.format = 32;
        event.window = _window;
        event.type = _protocols;
        event.data.data32[0] = _delete;
        xcb_send_event(_display, 0, _window, XCB_EVENT_MASK_NO_EVENT, reinterpret_cast<const char*>(&event));
        wait(began + kLimit, [this] { return !_seen.contains(_window); });
        std::printf("closed %.2f\n", milliseconds() - began);
    }

private:
    xcb_atom_t atom(const char* name)
    {
        const auto cookie = xcb_intern_atom(_display, 0, static_cast<uint16_t>(std::strlen(name)), name);
        const Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(_display, cookie, nullptr));
        return reply ? reply->atom : XCB_ATOM_NONE;
    }

    void listen(xcb_window_t window, uint32_t events)
    {
        xcb_change_window_attributes(_display, window, XCB_CW_EVENT_MASK, &events);
    }

    void choose()
    {
        sd_bus_message* call = nullptr;
        if (sd_bus_message_new_method_call(_bus, &call, _service, _menu, "com.canonical.dbusmenu", "Event") <
                0 ||
            sd_bus_message_append(call, "isvu", _entry, "clicked", "s", "", 0U) < 0)
        {
            fail("the choice cannot be put into words");
        }
        sd_bus_message_set_expect_reply(call, 0);
        if (sd_bus_send(_bus, call, nullptr) < 0 || sd_bus_flush(_bus) < 0) {
            fail("the choice cannot be sent");
        }
        sd_bus_message_unref(call);
    }

    [[nodiscard]] bool isTheProgram(xcb_window_t window)
    {
        const auto cookie = xcb_get_property(_display, 0, window, _pidAtom, XCB_ATOM_CARDINAL, 0, 1);
        const Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(_display, cookie, nullptr));
        return reply && xcb_get_property_value_length(reply.get()) == 4 &&
               *static_cast<const uint32_t*>(xcb_get_property_value(reply.get())) == _pid;
    }

    void take(const xcb_generic_event_t* event)
    {
        const int type = event->response_type & 0x7F;
        if (type == XCB_CREATE_NOTIFY) {
            const auto* created = reinterpret_cast<const xcb_create_notify_event_t*>(event);
            if (created->parent != _root || created->override_redirect != 0 || created->width < 100) {
                return;
            }
            listen(created->window, XCB_EVENT_MASK_STRUCTURE_NOTIFY);
            xcb_damage_create(_display, xcb_generate_id(_display), created->window,
                              XCB_DAMAGE_REPORT_LEVEL_RAW_RECTANGLES);
            _seen[created->window].created = milliseconds();
        } else if (type == XCB_MAP_NOTIFY) {
            const auto found = _seen.find(reinterpret_cast<const xcb_map_notify_event_t*>(event)->window);
            if (found != _seen.end()) {
                found->second.mapped = milliseconds();
                if (_window == XCB_NONE && isTheProgram(found->first)) {
                    _window = found->first;
                }
            }
        } else if (type == XCB_DESTROY_NOTIFY) {
            _seen.erase(reinterpret_cast<const xcb_destroy_notify_event_t*>(event)->window);
        } else if (type == _damage + XCB_DAMAGE_NOTIFY) {
            const auto* notice = reinterpret_cast<const xcb_damage_notify_event_t*>(event);
            if (const auto found = _seen.find(notice->drawable); found != _seen.end()) {
                found->second.width = notice->geometry.width;
                found->second.height = notice->geometry.height;
                found->second.add(notice->area);
            }
            if (notice->drawable == _window) {
                ++_times;
                _pixels += static_cast<long>(notice->area.width) * notice->area.height;
            }
        }
    }

    void takeEvents(double end)
    {
        xcb_flush(_display);
        while (const Reply<xcb_generic_event_t> event{xcb_poll_for_event(_display)}) {
            take(event.get());
        }
        xcb_flush(_display);
        pollfd readable{xcb_get_file_descriptor(_display), POLLIN, 0};
        poll(&readable, 1, std::max(0, static_cast<int>(end - milliseconds())));
        while (const Reply<xcb_generic_event_t> event{xcb_poll_for_event(_display)}) {
            take(event.get());
        }
    }

    template <typename Condition>
    void wait(double end, Condition condition)
    {
        while (!condition()) {
            if (milliseconds() > end) {
                fail("waited in vain");
            }
            takeEvents(end);
        }
    }

    uint32_t _pid;
    const char* _service;
    const char* _menu;
    int _entry;
    xcb_connection_t* _display;
    sd_bus* _bus = nullptr;
    xcb_window_t _root = XCB_NONE;
    int _damage = 0;
    xcb_atom_t _pidAtom = XCB_ATOM_NONE;
    xcb_atom_t _protocols = XCB_ATOM_NONE;
    xcb_atom_t _delete = XCB_ATOM_NONE;
    std::map<xcb_window_t, Seen> _seen;
    xcb_window_t _window = XCB_NONE;
    long _times = 0;
    long _pixels = 0;
};

} // namespace

int main(int argc, char** argv)
{
    if (argc != 5) {
        fail("usage: window-probe PID SERVICE MENU-PATH ENTRY");
    }
    Probe probe(static_cast<uint32_t>(std::atol(argv[1])), argv[2], argv[3], std::atoi(argv[4]));
    std::string command;
    while (std::cin >> command) {
        double seconds = 0;
        if (command == "open") {
            probe.open();
        } else if (command == "close") {
            probe.close();
        } else if (command == "watch" && std::cin >> seconds) {
            probe.watch(seconds);
        } else {
            fail("unknown command");
        }
        std::fflush(stdout);
    }
    return EXIT_SUCCESS;
}
