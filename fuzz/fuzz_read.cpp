// Fuzzes the reader with generated text. Properties that must hold for every input:
//   - no crash, no finding of the sanitizers, no exception while a report collects the errors;
//   - afterwards reader and writer are idle, and no counted object remains;
//   - each error has a position in the text;
//   - the result can be written;
//   - if reading had no error and writing omitted no value, the written text can be read without
//     an error, and writing that result gives the same text.
//
// The first byte selects whether comments are preserved.
#include "fuzz/fuzz_support.h"

#include <cstddef>

namespace {

void round_trip(std::string const &text, bool comments) {
    fuzz::cReadText const reading = fuzz::read_text(text, comments);
    if (!reading.value) return;
    unsigned int failed = 0;
    std::string const first = fuzz::write_text(reading.value, failed);
    if (!reading.clean || failed != 0) return;
    fuzz::cReadText const again = fuzz::read_text(first, comments);
    if (!again.clean) fuzz::stop("reading the written text fails", text, first);
    std::string const second = fuzz::write_text(again.value, failed);
    if (first != second) fuzz::stop("written differently the second time", first, second);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size) {
    if (size == 0) return 0;
    fuzz::cInput const input;
    round_trip(std::string(reinterpret_cast<char const *>(data) + 1, size - 1), (*data & 1) != 0);
    return 0;
}
