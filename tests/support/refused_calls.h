#pragma once
// Makes system calls fail in this process and in the programs that it runs, as on a machine or a
// file system that does not support them. This cannot be undone, so a test calls it in a separate
// process.

#include <cstddef>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace test {

// From now on `call` fails with `error` if all `bits` are set in its argument number `argument`;
// without bits it always fails. Ends the process if the kernel does not allow this.
inline void refuse_call(unsigned call, unsigned error, unsigned argument = 0, unsigned bits = 0) {
    unsigned const low = offsetof(seccomp_data, args) + 8 * argument;
    sock_filter filter[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, call, 0, 4),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, low),
        BPF_STMT(BPF_ALU | BPF_AND | BPF_K, bits),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, bits, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | error),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    sock_fprog const program{sizeof filter / sizeof *filter, filter};
    if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
        ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) != 0)
        ::_exit(126);
}

} // namespace test
