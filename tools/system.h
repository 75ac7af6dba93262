#pragma once
// Calls of the operating system that both tools make, and messages about its errors.

#include <cstring>
#include <fcntl.h>
#include <string>
#include <unistd.h>

// Opens those of the descriptors 0 to 2 that the caller has closed, so that no file or socket gets
// these numbers.
inline void fill_standard_descriptors(int input_flags, int output_flags) {
    for (int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (::fcntl(descriptor, F_GETFD) < 0)
            ::open("/dev/null", descriptor == STDIN_FILENO ? input_flags : output_flags);
}

// Appends the system's text for an errno, such as "cannot write: No space left on device".
inline std::string reason(std::string const &what, int error) {
    return what + ": " + std::strerror(error);
}
