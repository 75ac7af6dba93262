// Runs all benchmarks. Loading the library redirects std::cout, and nobody fires sig_idle here, so
// the report is written through a stream of its own on the C library's output.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <ostream>
#include <streambuf>

namespace {

class cStdioBuffer : public std::streambuf {
  public:
    explicit cStdioBuffer(std::FILE *file) : file_(file) {}

  protected:
    int overflow(int c) override { return c == EOF ? 0 : std::fputc(c, file_); }
    std::streamsize xsputn(char const *text, std::streamsize size) override {
        return static_cast<std::streamsize>(
            std::fwrite(text, 1, static_cast<std::size_t>(size), file_));
    }
    int sync() override { return std::fflush(file_); }

  private:
    std::FILE *file_;
};

} // namespace

int main(int argc, char **argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    cStdioBuffer out_buffer(stdout), error_buffer(stderr);
    std::ostream out(&out_buffer), errors(&error_buffer);
    benchmark::ConsoleReporter reporter(benchmark::ConsoleReporter::OO_Tabular);
    reporter.SetOutputStream(&out);
    reporter.SetErrorStream(&errors);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
