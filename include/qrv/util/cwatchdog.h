#pragma once
// The link to a watchdog: a program that starts another one and checks by its signs of life whether
// it still runs. In a process that no watchdog started, the link costs one failed system call.
//
//   idWatchDog:  not known --sig_init, no watchdog----> none      messages are dropped
//                not known --SetWatchDogID(id)--------> id        messages are posted
//   While it is not known, messages are stored in order; SetWatchDogID posts them.
//
// The link has one direction and reports nothing. On this system it consists of:
//   the detection    the environment variable QRV_STARTUP_TITLE is "WatchDog"
//   a message        one datagram to the abstract Unix socket "qrv-thread-" and the id: message,
//                    wParam and lParam, each as 32 bits, lowest byte first. Sending never waits for
//                    the receiver: if it has no room, the message is lost.
//                    qrv_set_post_message() substitutes a function
//                    (qrv/base/platform/cplatform.h)
//   the event        the named semaphore "/EreignisQuorvanta", raised if it existed when the
//                    library was loaded and belongs to the process's user or to root
// The receiver should check the sender of a datagram (SO_PASSCRED), since anybody may send to such
// a socket.

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
constexpr char const *watchdog_socket_prefix = "qrv-thread-";   // abstract: a NUL precedes it

// Values of idWatchDog that are not ids.
constexpr std::uint32_t watchdog_not_known = 0;
constexpr std::uint32_t watchdog_none = 0xFFFFFFFF;

// One message.
struct cMSG {
    std::uint32_t message;
    std::uint32_t wParam;
    std::int32_t lParam;
};

static_assert(sizeof(cMSG) == 12 && offsetof(cMSG, wParam) == 4 && offsetof(cMSG, lParam) == 8);

// The id of the watchdog's thread, watchdog_not_known at the start, or watchdog_none. Set it by
// SetWatchDogID(); a program may write watchdog_none to end the link.
extern QRV_API std::uint32_t idWatchDog;

// Stores the message while the id is not known, posts it if it is known, drops it if there is no
// watchdog. Stored messages use 12 bytes each until the process ends; a message is lost if memory
// is exhausted. Preserves errno. Throws only the exceptions of a function set by
// qrv_set_post_message().   O(1)
QRV_API void PostWatchDog(std::uint32_t message, std::uint32_t wParam, std::int32_t lParam);

// If the id is not known yet: stores it and posts all stored messages, in order. Has no effect if
// the id is known, or if there is no watchdog. 0 is not an id and changes nothing; watchdog_none
// means no watchdog, and drops the stored messages. A message that is posted while they are posted
// is sent at once, before the remaining ones; each message is sent once. If a function set by
// qrv_set_post_message() throws, the others are posted all the same, and then the first exception
// is rethrown.   O(stored messages)
QRV_API void SetWatchDogID(std::uint32_t id);

// For programs that qrv-watchdog starts: passes the number in QRV_WATCHDOG_ID, decimal digits for 1
// to 0xFFFFFFFE, to SetWatchDogID(). False, without an effect, if the variable has no such number
// or QRV_STARTUP_TITLE isn't "WatchDog". Call it after sig_init was fired. Child processes inherit
// both variables and would connect too: remove them from their environment to prevent that. A
// program with raised privileges (setuid) sees neither.
QRV_API bool qrv_take_watchdog_id();

// For tests: the number of messages that fit without growing.
QRV_API std::size_t qrv_watchdog_queue_capacity();

// The signals of a progress display, which the application fires. The library listens only to
// sig_progstep: each firing is one sign of life, the message watchdog_alive_message and the event.
extern QRV_API cSignal &sig_progstep;
extern QRV_API cSignal2<int, int> sig_proginit; // the application defines the two numbers
extern QRV_API cSignal sig_progbegin;
