// The reader against made-up texts. What must hold for every text:
//   - no crash, no finding of the sanitizers, no exception while a report collects the errors;
//   - afterwards reader and writer are idle, and no counted object is left;
//   - what was read can be written, and where nothing had to be left out, it reads back without an
//     error and is written the same again.
// The first byte chooses whether comments are kept.
#include "qrv/core/cobj.h"
#include "qrv/core/ctypes.h"
#include "qrv/signals/csignal.h"
#include "qrv/text/cattrscan.h"
#include "qrv/text/cexacttext.h"
#include "qrv/text/creadreport.h"
#include "text/ctext_state.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <locale>
#include <sstream>
#include <string>

namespace {

struct cReading {
    objref value;
    bool clean = false;
};

cReading read_text(std::string const &text, bool comments) {
    cReading reading;
    cat::ReadReport report;
    std::istringstream is(text);
    is.imbue(std::locale::classic());
    cAttrScan scan(is, false);
    scan.return_com(comments, nullptr);
    reading.clean = scan.scan_obj(reading.value, nullptr) == 0 && report.empty();
    return reading;
}

// The exact text, and how many values had to be left out.
std::string write_text(objref const &value, unsigned int &failed) {
    cat::ReadReport report; // keeps what is told about them off the message route
    cat::ExactText const exact;
    std::ostringstream os;
    os.imbue(std::locale::classic());
    value->writeobj(os);
    failed = exact.failed();
    return os.str();
}

[[noreturn]] void stop(char const *what, std::string const &first, std::string const &second) {
    std::fprintf(stderr, "%s\n---- first\n%s\n---- second\n%s\n", what, first.c_str(),
                 second.c_str());
    std::abort();
}

void round_trip(std::string const &text, bool comments) {
    cReading const reading = read_text(text, comments);
    if (!reading.value) return;
    unsigned int failed = 0;
    std::string const first = write_text(reading.value, failed);
    if (!reading.clean || failed != 0) return;
    cReading const again = read_text(first, comments);
    if (!again.clean) stop("what was written does not read back", text, first);
    std::string const second = write_text(again.value, failed);
    if (first != second) stop("written differently the second time", first, second);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size) {
    static bool const ready = [] {
        core_bootstrap();
        sig_idle();
        return true;
    }();
    if (size == 0 || !ready) return 0;
    std::uint32_t const census = cObjBase::ob_count();
    round_trip(std::string(reinterpret_cast<char const *>(data) + 1, size - 1), (*data & 1) != 0);
    if (!text_state().idle()) stop("the reader's state is not idle", "", text_state().path());
    reset_text_state();
    if (cObjBase::ob_count() != census) stop("counted objects are left", "", "");
    return 0;
}
