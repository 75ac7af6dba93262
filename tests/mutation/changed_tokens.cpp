#include "tests/mutation/changed_tokens.h"

#include "qrv/text/read/cattrscan.h"
#include "qrv/text/read/creadreport.h"
#include "tests/support/memory_file.h"
#include "tools/qrv/commands/command_line.h"
#include "tools/qrv/output/exit_code.h"
#include "tools/qrv/rules/hints.h"

#include <fcntl.h>
#include <functional>
#include <sstream>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace mutation_test {

namespace {

// Runs the work in a copy of this process. Returns its result (0 to 127), or -1 if the copy was
// killed.
int in_copy(std::function<int()> const &work) {
    pid_t const copy = ::fork();
    if (copy < 0) throw std::runtime_error("fork failed");
    if (copy == 0) ::_exit(work());
    int status = 0;
    ::waitpid(copy, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// Compiles the patterns of all hints here, so that not every copy of this process must do it.
bool compile_hints() {
    cat::ReadError error;
    error.kind = cat::ErrorKind::read_equals;
    error.line = error.column = 1;
    std::vector<cMistake> mistakes{{error, {}}};
    add_hints("", mistakes);
    return true;
}

} // namespace

bool is_any(std::string const &text, std::string_view characters) {
    return text.size() == 1 && characters.find(text[0]) != characters.npos;
}

std::vector<cToken> tokens_of(std::string const &text) {
    std::istringstream is(text);
    cAttrScanner const scanner(is);
    scanner.return_all(true);
    std::vector<cToken> tokens;
    for (size_t offset = 0; !cat::is_end(scanner.next_token());) {
        ::cToken const &token = scanner.current();
        if (token.code != tkComment && token.code != tkSpace)
            tokens.push_back({offset, std::string(token.text)});
        offset += token.text.size();
    }
    return tokens;
}

std::string replaced(std::string const &text, cToken const &token, std::string const &by) {
    return std::string(text).replace(token.offset, token.text.size(), by);
}

std::string without_brackets(std::string const &text, std::vector<cToken> const &tokens,
                             size_t index) {
    int depth = 0;
    for (size_t i = index; i < tokens.size(); ++i) {
        if (is_any(tokens[i].text, "({[<")) ++depth;
        if (is_any(tokens[i].text, ")}]>")) --depth;
        if (depth > 0) continue;
        size_t const start = tokens[index].offset;
        if (i == index) return text;
        return std::string(text).erase(start, tokens[i].offset + 1 - start);
    }
    return text;
}

bool is_reported(std::string const &text) {
    int const result = in_copy([&] {
        std::istringstream is(text);
        cat::ReadReport const report;
        cAttrScan scan(is, false);
        scan.return_com(true); // as the tool reads
        objref value;
        int delimiter = 0;
        scan.scan_obj(value, &delimiter);
        return report.empty() ? 0 : 1;
    });
    if (result < 0) throw std::runtime_error("the process was killed while it read: " + text);
    return result == 1;
}

cChecked checked(std::string const &text) {
    [[maybe_unused]] static bool const compiled = compile_hints();
    test::cMemory const file(text), lines("");
    int const status = in_copy([&] {
        if (::dup2(lines.descriptor(), STDERR_FILENO) < 0) return exit_failed + 1;
        std::string const name = file.name();
        char const *const arguments[] = {"qrv", "check", name.c_str()};
        return run_command_line(3, arguments);
    });
    return {status, lines.bytes().find(": error: ") != std::string::npos};
}

std::string missing_report(std::string const &text) {
    cChecked const tool = checked(text);
    if (tool.status == exit_done) return is_reported(text) ? "check reports no error" : "";
    if (tool.status != exit_found && tool.status != exit_failed)
        return "check ended with an unknown status";
    return tool.has_error ? "" : "check fails without a message";
}

} // namespace mutation_test
