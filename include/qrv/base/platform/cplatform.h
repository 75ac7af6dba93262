#pragma once
// All that the library asks of the operating system, apart from files opened through the standard
// library and the loading of modules. File names are bytes, as the system takes them. Nothing here
// reports: a failure is the result false, zero or an empty text.

#include "qrv/ccomp.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

// Where debug output goes: to this function. With null (as at the start) it goes to what the
// environment variable QRV_DEBUGOUT names, `stderr` or a file to append to, and without that (or in
// a program that runs with raised rights) nowhere. The function borrows the text for the call.
QRV_API void qrv_set_debug_output(void (*function)(char const *text));

// Which modules may be loaded: those for whose name, as given to the load, this function answers
// true. It is asked first of all, also about modules that are there already; a refused one reads as
// not found. With null (as at the start) a program may load everything, but nothing is loaded while
// text is being read: a type's name in a file would do, "x:/path/evil" or just a name.
QRV_API void qrv_set_module_filter(bool (*filter)(std::string const &name));

// Where messages to the thread `id` of a watch dog go (qrv/util/cwatchdog.h): to this function,
// which may call anything of the library and throw. With null (as at the start) each is one
// datagram to the abstract Unix socket "qrv-thread-" and the id in decimal, never waited for.
QRV_API void qrv_set_post_message(void (*function)(std::uint32_t id, std::uint32_t message,
                                                   std::uint32_t wParam, std::int32_t lParam));

namespace cat {

// Debug output of one text. Null is no text.
QRV_API void debug_output(char const *text);

// Writes everything, whatever the number of steps; waits where a descriptor would block. False when
// the system refuses.
QRV_API bool write_all(int descriptor, std::string_view bytes);

QRV_API bool is_terminal(int descriptor);

// A steadily growing counter, and its steps in a second.
QRV_API std::int64_t counter();
QRV_API std::int64_t counter_frequency();

// The local time in a format of strftime(); at most 127 bytes, else empty.
QRV_API std::string local_time(char const *format);

// The process's first argument, and the file that it runs.
QRV_API std::string program_name();
QRV_API std::string program_file();

QRV_API bool file_exists(std::string const &path);
QRV_API bool is_directory(std::string const &path);
QRV_API bool is_regular(std::string const &path); // a plain file
// Exists without the owner's permission to write; and taking that mark away, the others stay.
QRV_API bool is_read_only(std::string const &path);
QRV_API bool make_writable(std::string const &path);

// Would opening for writing succeed? Nothing is made or changed.
QRV_API bool can_write_file(std::string const &path);

// Gives the file this content, or leaves it as it was and answers false. The bytes are written to a
// new file in the same folder, brought to the disk and renamed over the old one; mode, owner,
// extended attributes and access lists are kept, a symbolic link stays and its target is replaced.
// Where that is not possible (no regular file, several hard links, a folder, an owner or an
// attribute that doesn't allow it) the file is written in place, after room for it has been found;
// what fails there is undone, but a kill isn't. errno tells why the result is false.
//
// The new file has no name until all of it is on the disk, but for file systems where every file
// has one. From then on until the rename this process holds an exclusive flock() on it.
QRV_API bool replace_file(std::string const &path, std::string_view bytes);

struct ReplaceOptions {
    // The bytes that the file must hold right before it changes: else another program has written
    // it since it was read, and it stays as that one left it. Borrowed.   Reads the file
    std::optional<std::string_view> expected = {};
    // Not empty: the old content, with mode, owner and attributes, is kept beside the file (for a
    // symbolic link, beside its target) under its name and this, without a slash. An older backup
    // is replaced; anything of that name that is not a plain file is an error. A backup that can't
    // have the owner or an attribute has no rights for others.
    std::string backup = {};
};

// What became of the file. Unless it is done, the file is as it was, and errno tells more.
enum class Replaced {
    done,
    failed,    // it can't be written
    changed,   // it does not hold the expected bytes; ESTALE
    no_backup, // the backup can't be written
};

QRV_API Replaced replace_file(std::string const &path, std::string_view bytes,
                              ReplaceOptions const &options);

// Content that need not be in memory. `write` puts all of it, `size` bytes, to a descriptor: false,
// with errno, if it can't. It may be called more than once, for descriptors at their starts.
struct Content {
    std::uint64_t size;
    std::function<bool(int descriptor)> write;
};

QRV_API Replaced replace_file(std::string const &path, Content const &content,
                              ReplaceOptions const &options);

// Removes from the folder of the file `path` (links are followed) what replace_file() left there
// when its process was killed. These files have names of the form `.qrv1234-5~`; removed are plain
// files of this process's user on which it gets the exclusive flock() without waiting, so never one
// that another process still writes. What can't be removed stays.   O(entries of the folder)
QRV_API void remove_unfinished(std::string const &path);

// Makes `copy` a new file with content and mode of the plain file `path`, whole or not at all; its
// owner too, or else with no rights for others. Nothing is ever overwritten: false with the errno
// EEXIST if there is something of that name.
QRV_API bool copy_to_new_file(std::string const &path, std::string const &copy);
// Two plain files, not one by two names, of the same bytes. False also if one can't be read.
QRV_API bool same_content(std::string const &path, std::string const &other);

} // namespace cat
