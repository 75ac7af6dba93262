#pragma once
// The system calls for the link to a watchdog: a value from the process that started this one, a
// message to a thread of another process, and a named event. Nothing here waits, reports or changes
// errno.

#include <cstdint>

namespace cat {

// Restores errno when it is destroyed.
class cKeepErrno {
  public:
    cKeepErrno() noexcept;
    cKeepErrno(cKeepErrno const &) = delete;
    cKeepErrno &operator=(cKeepErrno const &) = delete;
    ~cKeepErrno();

  private:
    int const before_;
};

// The environment value that the starting process set under this name. Null if it is not set, or if
// the process runs with raised privileges and must not trust it. Borrowed until the environment
// changes.
char const *start_value(char const *name);

// Sends three numbers to the thread `id`. If qrv_set_post_message() has set a function, calls it;
// it may throw and call anything. Else sends one datagram to the abstract Unix socket whose name is
// the prefix followed by `id`. The datagram is dropped if the socket does not exist or is full.
void post_message(char const *socket_prefix, std::uint32_t id, std::uint32_t message,
                  std::uint32_t wParam, std::int32_t lParam);

// Whether a process of the user `us` may use an object of `owner`.
constexpr bool trusts_owner(std::uint32_t owner, std::uint32_t us) {
    return owner == us || owner == 0;
}

// Opens an event that another process created. Null if it does not exist, or if it belongs to
// another user who isn't root. Each opened event needs one close_event().
void *open_event(char const *name) noexcept;
void set_event(void *event) noexcept;
void close_event(void *event) noexcept;

} // namespace cat
