#include "tests/sweep/in_process.h"

#include "tests/support/memory_file.h"
#include "tools/qrv/commands/command_line.h"

#include <stdexcept>

namespace sweep_test {
namespace {

// Redirects a descriptor to a file in memory until the end of the scope.
class cRedirected {
  public:
    explicit cRedirected(int descriptor) : descriptor_(descriptor), before_(::dup(descriptor)) {
        if (before_ < 0 || ::dup2(file_.descriptor(), descriptor) < 0)
            throw std::runtime_error("dup failed");
    }
    cRedirected(cRedirected const &) = delete;
    cRedirected &operator=(cRedirected const &) = delete;
    ~cRedirected() {
        ::dup2(before_, descriptor_);
        ::close(before_);
    }
    std::string bytes() const { return file_.bytes(); }

  private:
    test::cMemory const file_;
    int const descriptor_, before_;
};

} // namespace

cRun run(std::vector<std::string> arguments, std::string const &bytes) {
    test::cMemory const file(bytes);
    std::string const name = file.name();
    std::vector<char const *> words{"qrv"};
    for (std::string const &argument : arguments)
        words.push_back(argument == "@" ? name.c_str() : argument.c_str());
    cRedirected const out(STDOUT_FILENO), err(STDERR_FILENO);
    int const status = run_command_line(static_cast<int>(words.size()), words.data());
    return {status, out.bytes(), err.bytes()};
}

} // namespace sweep_test
