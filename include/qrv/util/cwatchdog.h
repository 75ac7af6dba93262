#pragma once
// The link to a watch dog: a program that starts another one and sees by its signs of life whether
// it still runs. A process that no watch dog started pays one failed system call for it.
//
//   idWatchDog:  not known --sig_init, started by nobody--> none        messages are dropped
//                not known --SetWatchDogID(id)------------> id          messages are posted
//   While it is not known, messages are kept in the order in which they come; SetWatchDogID posts
//   them.
//
// The link goes one way and reports nothing. Three things stand for it on this system:
//   who started us   the environment variable QRV_STARTUP_TITLE is "WatchDog"
//   a message        one datagram to the abstract Unix socket "qrv-thread-" and the id: message,
//                    wParam and lParam, each as 32 bits, lowest byte first. Nothing ever waits for
//                    the receiver: what it has no room for is lost. qrv_set_post_message() puts a
//                    function in its place (qrv/base/platform/cplatform.h)
//   the event        the named semaphore "/EreignisQuorvanta", raised if it was there when the
//                    library was loaded and belongs to the process's user or to root
// The receiver should look whose datagram it is (SO_PASSCRED): everybody may send to such a socket.

#include "qrv/base/csignal.h"
#include "qrv/ccomp.h"

#include <cstddef>
#include <cstdint>

// The message that each sign of life posts, with two zeros.
constexpr unsigned int watchdog_alive_message = 1027;

constexpr char const *watchdog_event_name = "/EreignisQuorvanta";
constexpr char const *watchdog_title_variable = "QRV_STARTUP_TITLE";
constexpr char const *watchdog_title = "WatchDog";
constexpr char const *watchdog_id_variable = "QRV_WATCHDOG_ID"; // the id, in decimal
constexpr char const *watchdog_socket_prefix = "qrv-thread-"; // abstract: a NUL stands ahead of it

// What idWatchDog is when it is no id.
constexpr std::uint32_t watchdog_not_known = 0;
constexpr std::uint32_t watchdog_none = 0xFFFFFFFF;

// One message.
struct cMSG {
    std::uint32_t message;
    std::uint32_t wParam;
    std::int32_t lParam;
};

static_assert(sizeof(cMSG) == 12 && offsetof(cMSG, wParam) == 4 && offsetof(cMSG, lParam) == 8);

// The id of the watch dog's thread, watchdog_not_known at the start, or watchdog_none. To be set by
// SetWatchDogID(); a program may write watchdog_none to end the link.
extern QRV_API std::uint32_t idWatchDog;

// Keeps the message while the id is not known, posts it when it is, drops it when there is no watch
// dog. Kept messages take 12 bytes each until the process ends; one for which there is no memory is
// lost. errno stays. Throws only what a function set by qrv_set_post_message() throws.   O(1)
QRV_API void PostWatchDog(std::uint32_t message, std::uint32_t wParam, std::int32_t lParam);

// While the id is not known: stores it and posts all kept messages, in order. Otherwise nothing,
// also when there is no watch dog. 0 is no id and changes nothing; watchdog_none stands for no
// watch dog, and drops what was kept. A message that is posted from inside such a post goes out at
// once, ahead of those still kept; each goes out once. When a function set by
// qrv_set_post_message() throws, the others are posted all the same, and the first exception goes
// through then.   O(kept messages)
QRV_API void SetWatchDogID(std::uint32_t id);

// For programs that the reference watch dog starts: hands the number in QRV_WATCHDOG_ID, decimal
// digits for 1 to 0xFFFFFFFE, to SetWatchDogID(). False, and nothing happens, when the variable
// doesn't hold such a number or QRV_STARTUP_TITLE isn't "WatchDog". To be called after sig_init was
// fired. What this process starts inherits both variables and would link up too: take them out of
// its environment if it shouldn't. A program that runs with raised rights sees neither.
QRV_API bool qrv_take_watchdog_id();

// For tests: for how many messages there is room without growing.
QRV_API std::size_t qrv_watchdog_queue_capacity();

// The signals of a progress display, for the application to fire. The library listens to
// sig_progstep alone: each firing is one sign of life, the message watchdog_alive_message and the
// event.
extern QRV_API cSignal &sig_progstep;
extern QRV_API cSignal2<int, int> sig_proginit; // what the two numbers say is the application's
extern QRV_API cSignal sig_progbegin;
