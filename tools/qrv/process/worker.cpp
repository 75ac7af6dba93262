#include "tools/qrv/process/worker.h"

#include "qrv/base/platform/cplatform.h"
#include "tools/qrv/output/exit_code.h"
#include "tools/qrv/output/no_memory.h"
#include "tools/qrv/output/output.h"
#include "tools/qrv/output/thrown.h"

#include <cerrno>
#include <cstring>
#include <string_view>
#include <sys/wait.h>
#include <type_traits>
#include <unistd.h>

#ifdef QRV_COVERAGE
extern "C" void __gcov_dump();
#endif

namespace {

// The fields of a reply and of its parts, in one list for packing and unpacking.
template <class Pipe> void fields(Pipe &pipe, cPlace &place) { pipe(place.line, place.column); }

template <class Pipe> void fields(Pipe &pipe, cNote &note) { pipe(note.place, note.text); }

template <class Pipe> void fields(Pipe &pipe, cDiagnostic &d) {
    pipe(d.severity, d.name, d.code, d.file, d.place, d.begin, d.end, d.text, d.notes, d.line,
         d.mark, d.following);
}

template <class Pipe> void fields(Pipe &pipe, cFindings &found) {
    pipe(found.file, found.diagnostics, found.more_errors, found.more_warnings, found.strict);
}

template <class Pipe> void fields(Pipe &pipe, cReply &reply) {
    pipe(reply.status, reply.text, reply.found, reply.messages, reply.extra, reply.fingerprint,
         reply.is_stable);
}

template <class T>
concept cPlain = std::is_arithmetic_v<T> || std::is_enum_v<T>;

// Packs the fields into bytes. The size of a string or list precedes its content.
class cPacker {
  public:
    template <class... T> void operator()(T &...parts) { (add(parts), ...); }
    std::string take() { return std::move(bytes_); }

  private:
    void add(cPlain auto part) {
        bytes_.append(reinterpret_cast<char const *>(&part), sizeof part);
    }
    void add(std::string &text) {
        add(text.size());
        bytes_ += text;
    }
    template <class T> void add(std::vector<T> &list) {
        add(list.size());
        for (T &part : list) add(part);
    }
    template <class T>
    requires(!cPlain<T>) void add(T &part) { fields(*this, part); }

    std::string bytes_;
};

class cUnpacker {
  public:
    explicit cUnpacker(std::string_view bytes) : rest_(bytes) {}
    template <class... T> void operator()(T &...parts) { (get(parts), ...); }
    bool is_done() const { return good_ && rest_.empty(); }

  private:
    std::string_view next(size_t size) {
        good_ = good_ && size <= rest_.size();
        std::string_view const part = good_ ? rest_.substr(0, size) : std::string_view();
        rest_.remove_prefix(part.size());
        return part;
    }
    template <cPlain T> void get(T &part) {
        std::string_view const bytes = next(sizeof part);
        if (good_) std::memcpy(&part, bytes.data(), sizeof part);
    }
    void get(std::string &text) {
        size_t size = 0;
        get(size);
        text = next(size);
    }
    template <class T> void get(std::vector<T> &list) {
        size_t count = 0;
        get(count);
        for (size_t i = 0; good_ && i < count; ++i) get(list.emplace_back());
    }
    template <class T>
    requires(!cPlain<T>) void get(T &part) { fields(*this, part); }

    std::string_view rest_;
    bool good_ = true;
};

std::string packed(cReply &reply) {
    cPacker pipe;
    fields(pipe, reply);
    return pipe.take();
}

bool unpack(std::string const &bytes, cReply &reply) {
    cUnpacker pipe(bytes);
    fields(pipe, reply);
    return pipe.is_done();
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

[[noreturn]] void be_worker(std::string const &name, int descriptor,
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
    __gcov_dump(); // _exit does not call it
#endif
    ::_exit(sent ? 0 : exit_failed); // does not destroy static objects, which belong to the parent
}

std::string cause_of_death(int status) {
    if (WIFSIGNALED(status)) return std::string("signal ") + ::strsignal(WTERMSIG(status));
    return "exit status " + std::to_string(WEXITSTATUS(status));
}

} // namespace

void put_messages(cReply const &reply) { put_lines(text_of(reply.found) + reply.messages); }

cReply failed(std::string const &name, std::string const &text) {
    cReply reply;
    reply.found.file = name;
    reply.found.diagnostics.push_back({.file = name, .text = text});
    return reply;
}

cReply in_worker(std::string const &name, std::function<void(cReply &)> const &work) {
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
        be_worker(name, ends[1], work);
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
