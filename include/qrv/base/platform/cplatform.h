#pragma once
// The library's access to the operating system, apart from files opened through the standard
// library and the loading of modules. File names are bytes, as the system uses them. No function
// here reports an error: on failure it returns false, zero or an empty string.

#include "qrv/ccomp.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

// Sets the function that receives debug output. With null (the default) it goes to the destination
// in the environment variable QRV_DEBUGOUT: `stderr`, or a file to append to. Without that
// variable, or in a program with raised privileges (setuid), it is discarded. The function borrows
// the string during the call.
QRV_API void qrv_set_debug_output(void (*function)(char const *text));

// Sets the filter on modules: a load succeeds only if this function returns true for the name that
// was passed to the load. It is called for modules that are already loaded, too. A rejected module
// counts as not found. With null (the default) a program may load everything, but reading text
// loads nothing: a type's name in a file, such as "x:/path/evil" or just a name, must not load
// code. With a filter, reading text may load what the filter accepts.
QRV_API void qrv_set_module_filter(bool (*filter)(std::string const &name));

// Sets the function that receives messages to the thread `id` of a watchdog (qrv/util/cwatchdog.h).
// It may call any function of the library and throw. With null (the default) each message is one
// datagram to the abstract Unix socket "qrv-thread-" and the id in decimal, sent without waiting.
QRV_API void qrv_set_post_message(void (*function)(std::uint32_t id, std::uint32_t message,
                                                   std::uint32_t wParam, std::int32_t lParam));

namespace cat {

// Sends one string to debug output. Null sends nothing.
QRV_API void debug_output(char const *text);

// Writes all bytes, in as many steps as necessary. Waits if the descriptor would block. False if a
// write fails.
QRV_API bool write_all(int descriptor, std::string_view bytes);

// False also for a descriptor that is not open.
QRV_API bool is_terminal(int descriptor);

// A counter that never decreases, and its ticks per second.
QRV_API std::int64_t counter();
QRV_API std::int64_t counter_frequency();

// The local time in a format of strftime(). Empty if it has more than 127 bytes.
QRV_API std::string local_time(char const *format);

// The name by which the process was started (its first argument), and the path of its program file.
QRV_API std::string program_name();
QRV_API std::string program_file();

QRV_API bool file_exists(std::string const &path);
QRV_API bool is_directory(std::string const &path);
QRV_API bool is_regular(std::string const &path); // a plain file
// True if the file exists and its owner has no permission to write; make_writable() sets that
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
// reserved. If that fails, the old content is restored; if the process is killed meanwhile, it is
// not. If the result is false, errno has the reason.
//
// The new file has no name until it is complete on the disk, except on file systems without unnamed
// files. While it has its own name, this process holds an exclusive flock() on it.
QRV_API bool replace_file(std::string const &path, std::string_view bytes);

struct ReplaceOptions {
    // The bytes that the file must contain right before it is replaced; the check reads it. If it
    // has other bytes or does not exist, another program has changed it: then it stays as it is,
    // and the result is `changed`. Borrowed.
    std::optional<std::string_view> expected = {};
    // If not empty, the old content, with mode, owner and attributes, is saved next to the file
    // (for a symbolic link, next to its target) under the file's name followed by this suffix. A
    // suffix with a slash is an error. An older backup is replaced; anything of that name that is
    // not a regular file is an error. If the backup's owner or attributes cannot be set, only its
    // owner may access it.
    std::string backup = {};
};

// The outcome. Unless it is `done`, the file is unchanged and errno has the reason.
enum class Replaced {
    done,
    failed,    // the file cannot be written
    changed,   // the file does not contain the expected bytes; ESTALE
    no_backup, // the backup cannot be written
};

// As above, with these options.
QRV_API Replaced replace_file(std::string const &path, std::string_view bytes,
                              ReplaceOptions const &options);

// Content that need not be in memory. `write` writes all of it, `size` bytes, to a descriptor whose
// position is 0; on failure it returns false and sets errno. It may be called more than once.
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
// waiting. So a file that another process still writes stays, and so does a file that cannot be
// removed.   O(entries of the folder)
QRV_API void remove_unfinished(std::string const &path);

// Creates the new file `copy` with the content and mode of the regular file `path`, completely or
// not at all. If the copy cannot have the same owner, only its owner may access it. Never
// overwrites: if the name exists, the result is false and errno is EEXIST.
QRV_API bool copy_to_new_file(std::string const &path, std::string const &copy);
// Whether two regular files have the same bytes. False for two names of one file, and if one cannot
// be read.
QRV_API bool same_content(std::string const &path, std::string const &other);

} // namespace cat
