#include "tools/qrv/process/worker.h"

#include "qrv/base/platform/cplatform.h"
#include "tools/qrv/output/exit_code.h"
#include "tools/qrv/output/no_memory.h"
#include "tools/qrv/output/output.h"
#include "tools/qrv/output/thrown.h"

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <sys/wait.h>
#include <unistd.h>

#ifdef QRV_COVERAGE
extern "C" void __gcov_dump();
#endif

namespace {

// A reply on the pipe: status and flag, the count, then each text behind its length.
std::string packed(cReply const &reply) {
    std::string bytes{static_cast<char>(reply.status), static_cast<char>(reply.comes_back)};
    bytes.append(reinterpret_cast<char const *>(&reply.errors), sizeof reply.errors);
    for (std::string const *text : {&reply.text, &reply.messages, &reply.extra, &reply.image}) {
        std::uint64_t const size = text->size();
        bytes.append(reinterpret_cast<char const *>(&size), sizeof size);
        bytes += *text;
    }
    return bytes;
}

bool unpack_text(std::string const &bytes, size_t &at, std::string &text) {
    std::uint64_t size = 0;
    if (bytes.size() - at < sizeof size) return false;
    std::memcpy(&size, bytes.data() + at, sizeof size);
    at += sizeof size;
    if (bytes.size() - at < size) return false;
    text.assign(bytes, at, size);
    at += size;
    return true;
}

bool unpack(std::string const &bytes, cReply &reply) {
    size_t at = 2 + sizeof reply.errors;
    if (bytes.size() < at) return false;
    reply.status = static_cast<unsigned char>(bytes[0]);
    reply.comes_back = bytes[1] != 0;
    std::memcpy(&reply.errors, bytes.data() + 2, sizeof reply.errors);
    for (std::string *text : {&reply.text, &reply.messages, &reply.extra, &reply.image})
        if (!unpack_text(bytes, at, *text)) return false;
    return at == bytes.size();
}

std::string read_all(int descriptor) {
    std::string bytes;
    char buffer[65536];
    for (;;) {
        ssize_t const count = ::read(descriptor, buffer, sizeof buffer);
        if (count > 0)
            bytes.append(buffer, static_cast<size_t>(count));
        else if (count == 0 || errno != EINTR)
            return bytes;
    }
}

[[noreturn]] void be_child(std::string const &name, int descriptor,
                           std::function<void(cReply &)> const &work) {
    end_silently_when_memory_ends();
    cReply reply;
    try {
        work(reply);
    } catch (...) {
        reply = failed(name, "the work failed: " + thrown());
    }
    bool const sent = cat::write_all(descriptor, packed(reply));
#ifdef QRV_COVERAGE
    __gcov_dump(); // which _exit leaves out
#endif
    ::_exit(sent ? 0 : exit_failed); // the parent's statics are not this process's to end
}

std::string cause_of_death(int status) {
    if (WIFSIGNALED(status)) return std::string("signal ") + ::strsignal(WTERMSIG(status));
    return "exit status " + std::to_string(WEXITSTATUS(status));
}

} // namespace

cReply failed(std::string const &name, std::string const &text) {
    cReply reply;
    reply.messages = name + ": error: " + text + "\n";
    return reply;
}

cReply in_child(std::string const &name, std::function<void(cReply &)> const &work) {
    int ends[2];
    if (::pipe(ends) != 0) return failed(name, reason("cannot create a pipe", errno));
    pid_t const child = ::fork();
    if (child < 0) {
        int const error = errno;
        ::close(ends[0]);
        ::close(ends[1]);
        return failed(name, reason("cannot start a process", error));
    }
    if (child == 0) {
        ::close(ends[0]);
        be_child(name, ends[1], work);
    }
    ::close(ends[1]);
    std::string const bytes = read_all(ends[0]);
    ::close(ends[0]);
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    cReply reply;
    if (unpack(bytes, reply)) return reply;
    if (WIFEXITED(status) && WEXITSTATUS(status) == status_without_memory)
        return failed(name, out_of_memory);
    return failed(name, "the work ended too early: " + cause_of_death(status));
}
