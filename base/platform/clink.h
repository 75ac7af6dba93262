#pragma once
// What the link to a watch dog needs of the system: who started the process, a message to a thread
// of another process, and a named event. Nothing here waits, reports or changes errno.

#include <cstdint>

namespace cat {

// Keeps errno as it was.
class cKeepErrno {
  public:
    cKeepErrno() noexcept;
    cKeepErrno(cKeepErrno const &) = delete;
    cKeepErrno &operator=(cKeepErrno const &) = delete;
    ~cKeepErrno();

  private:
    int const before_;
};

// What whoever started the process left under this name; null if nothing, or if the process runs
// with raised rights and must not believe it. Borrowed until the environment changes.
char const *start_value(char const *name);

// Three numbers for the thread `id`: to the function that qrv_set_post_message() set, which may
// throw and call anything; else as one datagram to the abstract Unix socket of that prefix and
// number, which is lost where there is no such socket or no room.
void post_message(char const *socket_prefix, std::uint32_t id, std::uint32_t message,
                  std::uint32_t wParam, std::int32_t lParam);

// May a process of the user `us` use what belongs to `owner`?
constexpr bool trusts_owner(std::uint32_t owner, std::uint32_t us) {
    return owner == us || owner == 0;
}

// An event that others can wait for, made by somebody else. Null if there is none, or if it belongs
// to another user who isn't root. close_event() for each that was opened.
void *open_event(char const *name) noexcept;
void set_event(void *event) noexcept;
void close_event(void *event) noexcept;

} // namespace cat
