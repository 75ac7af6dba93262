#pragma once
// Makes the calls to the operating system fail, one by one: a sweep runs a body repeatedly, and in
// the n-th run the n-th call fails or ends the process, until a run makes fewer calls.
//
//   cOsFaults const faults(n, ENOSPC);
//   bool const done = cat::replace_file(file, "new");
//
// Only for test programs linked with the library's objects: cat::os is private to the library.

#include "base/platform/os_calls.h"

#include <cerrno>
#include <string>
#include <type_traits>

// Counts the calls that wrap() lists, until the end of its scope, and then restores the original
// functions.
class cOsFaults {
  public:
    static constexpr int dies = -1; // ends the process instead of returning an error

    // The call with the number `at` (from 0) fails or ends the process at once. All others call the
    // real functions, except fsync, which does nothing.
    cOsFaults(int at, int error) : before_(cat::os) {
        real_ = cat::os;
        real_.fsync = [](int) { return 0; }; // a sweep needs no disk
        calls_ = 0;
        at_ = at;
        error_ = error;
        hit_.clear();
        wrap();
    }
    cOsFaults(cOsFaults const &) = delete;
    cOsFaults &operator=(cOsFaults const &) = delete;
    ~cOsFaults() { cat::os = before_; }

    static int calls() { return calls_; }
    static std::string const &hit() {
        return hit_;
    } // the name of the call that failed, otherwise empty

  private:
    // Returns whether this call is the one that fails.
    static bool breaks(char const *name) {
        if (calls_++ != at_) return false;
        if (error_ == dies) ::_exit(9);
        hit_ = name;
        errno = error_;
        return true;
    }

    template <auto Call> struct cTag {};
    template <auto Call, auto Other> static constexpr bool same =
        std::is_same_v<cTag<Call>, cTag<Other>>;

    template <auto Call, class Function> struct cWrapper;
    template <auto Call, class Result, class... Args> struct cWrapper<Call, Result (*)(Args...)> {
        static constinit inline char const *name = "";
        static Result call(Args... args) {
            if (!breaks(name)) return (real_.*Call)(args...);
            // The descriptor is closed even if the call fails.
            if constexpr (same<Call, &cat::os_calls::close>) real_.close(args...);
            if constexpr (std::is_pointer_v<Result>)
                return nullptr;
            else
                return -1;
        }
    };
    template <auto Call> static void wrap(char const *name) {
        using cCall = cWrapper<Call, std::remove_reference_t<decltype(cat::os.*Call)>>;
        cCall::name = name;
        cat::os.*Call = cCall::call;
    }
    static void wrap() {
        using T = cat::os_calls;
        wrap<&T::open>("open");
        wrap<&T::read>("read");
        wrap<&T::write>("write");
        wrap<&T::close>("close");
        wrap<&T::dup>("dup");
        wrap<&T::flock>("flock");
        wrap<&T::fsync>("fsync");
        wrap<&T::fallocate>("fallocate");
        wrap<&T::ftruncate>("ftruncate");
        wrap<&T::fchmod>("fchmod");
        wrap<&T::fchown>("fchown");
        wrap<&T::rename>("rename");
        wrap<&T::rename_new>("rename_new");
        wrap<&T::link>("link");
        wrap<&T::link_open>("link_open");
        wrap<&T::unlink>("unlink");
        wrap<&T::stat>("stat");
        wrap<&T::lstat>("lstat");
        wrap<&T::fstat>("fstat");
        wrap<&T::listxattr>("listxattr");
        wrap<&T::getxattr>("getxattr");
        wrap<&T::flistxattr>("flistxattr");
        wrap<&T::fgetxattr>("fgetxattr");
        wrap<&T::fsetxattr>("fsetxattr");
        wrap<&T::fremovexattr>("fremovexattr");
        wrap<&T::access>("access");
        wrap<&T::faccess>("faccess");
        wrap<&T::chmod>("chmod");
        wrap<&T::readlink>("readlink");
        wrap<&T::stack>("stack");
        wrap<&T::socket>("socket");
        wrap<&T::sendto>("sendto");
        wrap<&T::sem_open>("sem_open");
        wrap<&T::sem_post>("sem_post");
        wrap<&T::sem_close>("sem_close");
    }

    static inline cat::os_calls real_;
    static inline int calls_ = 0, at_ = 0, error_ = 0;
    static inline std::string hit_;
    cat::os_calls const before_;
};
