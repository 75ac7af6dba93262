#pragma once
// Calls of the operating system that both tools make, and its errors in words.

#include <cstring>
#include <fcntl.h>
#include <string>
#include <unistd.h>

// Opens those of the descriptors 0 to 2 that the caller has closed, so that no file or socket gets
// them.
inline void fill_standard_descriptors(int input_flags, int output_flags) {
    for (int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (::fcntl(descriptor, F_GETFD) < 0)
            ::open("/dev/null", descriptor == STDIN_FILENO ? input_flags : output_flags);
}

// "cannot ...: No space left on device" for errno.
inline std::string reason(std::string const &what, int error) {
    return what + ": " + std::strerror(error);
}
