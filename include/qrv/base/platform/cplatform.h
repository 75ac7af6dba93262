#pragma once
// The library's access to the operating system, apart from files opened through the standard
// library and the loading of modules. File names are bytes, as the system uses them. Nothing here
// reports: a failure is the result false, zero or an empty string.

#include "qrv/ccomp.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

// Sets the function that receives debug output. With null (the default) it goes to the destination
// in the environment variable QRV_DEBUGOUT: `stderr`, or a file to append to. Without that
// variable, or in a program that runs with raised rights, it is discarded. The function borrows the
// string during the call.
QRV_API void qrv_set_debug_output(void (*function)(char const *text));

// Sets the filter on modules: only those for whose name, as passed to the load, this function
// returns true may be loaded. It is called first, also for modules that are loaded already; a
// rejected module counts as not found. With null (the default) a program may load everything, but
// reading text loads nothing: otherwise a type's name in a file, such as "x:/path/evil" or just a
// name, could load code.
QRV_API void qrv_set_module_filter(bool (*filter)(std::string const &name));

// Sets the function that receives messages to the thread `id` of a watchdog (qrv/util/cwatchdog.h).
// It may call any function of the library and throw. With null (the default) each message is one
// datagram to the abstract Unix socket "qrv-thread-" and the id in decimal, sent without waiting.
QRV_API void qrv_set_post_message(void (*function)(std::uint32_t id, std::uint32_t message,
                                                   std::uint32_t wParam, std::int32_t lParam));

namespace cat {

// Sends one string to debug output. Null sends nothing.
QRV_API void debug_output(char const *text);

// Writes all bytes, in as many steps as necessary; waits where a descriptor would block. False if
// the system fails.
QRV_API bool write_all(int descriptor, std::string_view bytes);

// False also for a descriptor that is not open.
QRV_API bool is_terminal(int descriptor);

// A counter that never decreases, and its ticks per second.
QRV_API std::int64_t counter();
QRV_API std::int64_t counter_frequency();

// The local time in a format of strftime(); at most 127 bytes, else empty.
QRV_API std::string local_time(char const *format);

// The process's first argument, and the path of its program file.
QRV_API std::string program_name();
QRV_API std::string program_file();

QRV_API bool file_exists(std::string const &path);
QRV_API bool is_directory(std::string const &path);
QRV_API bool is_regular(std::string const &path); // a plain file
// Whether the file exists without the owner's permission to write; make_writable() sets that
// permission and no other.
QRV_API bool is_read_only(std::string const &path);
QRV_API bool make_writable(std::string const &path);

// Whether opening for writing would succeed. Creates and changes nothing.
QRV_API bool can_write_file(std::string const &path);

// Gives the file this content, or returns false and leaves it unchanged. The bytes are written to a
// new file in the same folder, flushed to the disk and renamed over the old one. Mode, owner,
// extended attributes and access lists are preserved; a symbolic link stays and its target is
// replaced. Where that is not possible (not a regular file, several hard links, a folder, an owner
// or an attribute that cannot be set) the file is written in place, after room for it has been
// reserved; a failure there is undone, a kill is not. errno has the reason of a false result.
//
// The new file has no name until it is complete on the disk, except on file systems where every
// file has a name. From then on until the rename this process holds an exclusive flock() on it.
QRV_API bool replace_file(std::string const &path, std::string_view bytes);

struct ReplaceOptions {
    // The bytes that the file must hold right before it changes. Otherwise another program has
    // written it since it was read, and it stays as that program left it. Borrowed. The check reads
    // the file.
    std::optional<std::string_view> expected = {};
    // If not empty, the old content, with mode, owner and attributes, is saved next to the file
    // (for a symbolic link, next to its target) under the file's name followed by this suffix,
    // which has no slash. An older backup is replaced; anything of that name that is not a regular
    // file is an error. A backup whose owner or attributes cannot be set has no rights for others.
    std::string backup = {};
};

// The outcome. Unless it is `done`, the file is unchanged and errno has the reason.
enum class Replaced {
    done,
    failed,    // the file cannot be written
    changed,   // the file does not hold the expected bytes; ESTALE
    no_backup, // the backup cannot be written
};

// As above, with these options.
QRV_API Replaced replace_file(std::string const &path, std::string_view bytes,
                              ReplaceOptions const &options);

// Content that need not be in memory. `write` writes all of it, `size` bytes, to a descriptor;
// false, with errno, on failure. It may be called more than once, each time for a descriptor at its
// start.
struct Content {
    std::uint64_t size;
    std::function<bool(int descriptor)> write;
};

// As above, with these options.
QRV_API Replaced replace_file(std::string const &path, Content const &content,
                              ReplaceOptions const &options);

// Removes from the folder of the file `path` (links are followed) the files that replace_file()
// left there when its process was killed. Their names have the form `.qrv1234-5~`. Only regular
// files of this process's user are removed, and only with an exclusive flock(), acquired without
// waiting; so never a file that another process still writes. Files that cannot be removed stay.
// O(entries of the folder)
QRV_API void remove_unfinished(std::string const &path);

// Creates the new file `copy` with the content and mode of the regular file `path`, completely or
// not at all. It has the same owner, or else no rights for others. Never overwrites: false with the
// errno EEXIST if the name exists.
QRV_API bool copy_to_new_file(std::string const &path, std::string const &copy);
// Whether two regular files, not two names of one, have the same bytes. False also if one cannot be
// read.
QRV_API bool same_content(std::string const &path, std::string const &other);

} // namespace cat
