#include "tools/qrv/output/progress.h"

#include "tools/qrv/output/escaped.h"
#include "tools/qrv/output/messages.h"
#include "tools/qrv/output/output.h"

#include <unistd.h>

namespace {

constexpr std::uint64_t smallest_shown = 50'000'000;

constexpr size_t longest_name = 60; // a line wider than the terminal could not be removed

bool is_needed(std::uint64_t size) { return size > smallest_shown && ::isatty(STDERR_FILENO) == 1; }

} // namespace

cProgress::cProgress(std::string const &name, std::uint64_t size)
    : name_(is_needed(size) ? escaped(shortened(name, longest_name)) : ""), size_(size) {}

void cProgress::add(std::uint64_t bytes) {
    if (!is_shown()) return;
    done_ += bytes;
    show(name_ + ": " + std::to_string(done_ * 100 / size_) + " % read");
}

// Replaces the current line. Blanks erase it on every terminal.
void cProgress::show(std::string const &line) {
    if (line == line_) return;
    put_lines('\r' + std::string(line_.size(), ' ') + "\r" + line);
    line_ = line;
}
