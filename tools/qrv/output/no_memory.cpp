#include "tools/qrv/output/no_memory.h"

#include "qrv/base/platform/cplatform.h"
#include "tools/qrv/output/escaped.h"
#include "tools/qrv/output/exit_code.h"
#include "tools/qrv/output/messages.h"

#include <new>
#include <string_view>
#include <unistd.h>

namespace {

constinit cWorkOn const *innermost = nullptr;

// Allocates nothing and destroys nothing.
[[noreturn]] void end() {
    static constexpr std::string_view without_name = "qrv: error: out of memory\n";
    cat::write_all(STDERR_FILENO, innermost ? innermost->message() : without_name);
    ::_exit(exit_failed);
}

} // namespace

void end_when_memory_ends() { std::set_new_handler(end); }

void end_silently_when_memory_ends() {
    std::set_new_handler([] { ::_exit(status_without_memory); });
}

cWorkOn::cWorkOn(std::string const &name)
    : message_(escaped(name) + ": error: " + out_of_memory + "\n"), outer_(innermost) {
    innermost = this;
}

cWorkOn::~cWorkOn() { innermost = outer_; }
