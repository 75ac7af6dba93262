#pragma once
// The system calls for files, modules and the link to a watchdog, as a table: a test substitutes
// its own functions to make the n-th call fail, or to end the process there.

#include <cstdio>
#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <semaphore.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace cat {

struct os_calls {
    int (*open)(char const *path, int flags, mode_t mode);
    ssize_t (*read)(int descriptor, void *bytes, size_t count);
    ssize_t (*write)(int descriptor, void const *bytes, size_t count);
    int (*close)(int descriptor);
    int (*dup)(int descriptor);
    int (*flock)(int descriptor, int operation);
    int (*fsync)(int descriptor);
    int (*fallocate)(int descriptor, off_t offset, off_t length); // the length does not change
    int (*ftruncate)(int descriptor, off_t length);
    int (*fchmod)(int descriptor, mode_t mode);
    int (*fchown)(int descriptor, uid_t user, gid_t group);
    int (*rename)(char const *from, char const *to);
    int (*rename_new)(char const *from, char const *to); // fails if `to` exists
    int (*link)(char const *from, char const *to);
    int (*link_open)(int descriptor, char const *to); // gives an unnamed open file a name
    int (*unlink)(char const *path);
    int (*stat)(char const *path, struct stat *info);
    int (*lstat)(char const *path, struct stat *info);
    int (*fstat)(int descriptor, struct stat *info);
    ssize_t (*listxattr)(char const *path, char *names, size_t size);
    ssize_t (*getxattr)(char const *path, char const *name, void *value, size_t size);
    ssize_t (*flistxattr)(int descriptor, char *names, size_t size);
    ssize_t (*fgetxattr)(int descriptor, char const *name, void *value, size_t size);
    int (*fsetxattr)(int descriptor, char const *name, void const *value, size_t size, int flags);
    int (*fremovexattr)(int descriptor, char const *name);
    int (*access)(char const *path, int mode);  // with the real user's rights
    int (*faccess)(char const *path, int mode); // with the effective ones
    int (*chmod)(char const *path, mode_t mode);
    ssize_t (*readlink)(char const *path, char *target, size_t size);
    void *(*dlopen)(char const *path, int flags);
    void *(*dlsym)(void *library, char const *name);
    int (*dlinfo)(void *library, int question, void *answer);
    int (*dlclose)(void *library);
    char *(*dlerror)();
    int (*stack)(pthread_t thread, pthread_attr_t *attributes); // 0, or the error
    int (*socket)(int family, int type, int protocol);
    ssize_t (*sendto)(int descriptor, void const *bytes, size_t count, int flags,
                      sockaddr const *address, socklen_t length);
    sem_t *(*sem_open)(char const *name); // one that exists and can be trusted
    int (*sem_post)(sem_t *semaphore);
    int (*sem_close)(sem_t *semaphore);
};

extern os_calls os;

} // namespace cat
