#pragma once
// The system calls behind files and the loading of modules, as a table: a test puts its own
// functions in to make the n-th call fail, or to end the process there. One thread at a time.

#include <cstdio>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace cat {

struct os_calls {
    int (*open)(char const *path, int flags, mode_t mode);
    ssize_t (*read)(int descriptor, void *bytes, size_t count);
    ssize_t (*write)(int descriptor, void const *bytes, size_t count);
    int (*close)(int descriptor);
    int (*fsync)(int descriptor);
    int (*fallocate)(int descriptor, off_t offset, off_t length); // the file stays as long as it is
    int (*ftruncate)(int descriptor, off_t length);
    int (*fchmod)(int descriptor, mode_t mode);
    int (*fchown)(int descriptor, uid_t user, gid_t group);
    int (*rename)(char const *from, char const *to);
    int (*rename_new)(char const *from, char const *to); // never over what is there
    int (*link)(char const *from, char const *to);
    int (*unlink)(char const *path);
    int (*stat)(char const *path, struct stat *info);
    int (*fstat)(int descriptor, struct stat *info);
    int (*access)(char const *path, int mode);  // with the real rights, as asked
    int (*faccess)(char const *path, int mode); // with the effective ones
    int (*chmod)(char const *path, mode_t mode);
    ssize_t (*readlink)(char const *path, char *target, size_t size);
    void *(*dlopen)(char const *path, int flags);
    void *(*dlsym)(void *library, char const *name);
    int (*dlinfo)(void *library, int question, void *answer);
    int (*dlclose)(void *library);
    char *(*dlerror)();
};

extern os_calls os;

} // namespace cat
