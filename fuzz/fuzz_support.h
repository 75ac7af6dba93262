#pragma once
// Shared code of the fuzz targets: reading and writing without message output, and the properties
// that must hold after every input: reader and writer are idle, and no lexer or counted object
// remains.

#include "qrv/base/csignal.h"
#include "qrv/core/cobj.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/read/cattrscan.h"
#include "qrv/text/read/creadreport.h"
#include "qrv/text/write/cexacttext.h"
#include "tests/support/types.h"
#include "tests/text/read_support.h"
#include "text/state/ctext_state.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <locale>
#include <optional>
#include <sstream>
#include <string>

namespace fuzz {

[[noreturn]] inline void stop(char const *what, std::string const &first,
                              std::string const &second) {
    std::fprintf(stderr, "%s\n---- first\n%s\n---- second\n%s\n", what, first.c_str(),
                 second.c_str());
    std::abort();
}

// A guard around the work on one input. The first one creates the core, with all its types.
class cInput {
  public:
    cInput() : census_(census()), types_(std::in_place) {}
    cInput(cInput const &) = delete;
    cInput &operator=(cInput const &) = delete;
    ~cInput() {
        if (!text_state().idle() || cat::is_reading())
            stop("the reader's state is not idle", "", text_state().path());
        if (cAttrLexer::living() != 0) stop("a lexer remains", "", "");
        reset_text_state();
        types_.reset();
        if (cObjBase::ob_count() != census_) stop("counted objects remain", "", "");
    }

  private:
    static std::uint32_t census() {
        static bool const ready = [] {
            cat::find_type("intf"); // created on its first use by name
            sig_idle();
            return true;
        }();
        return ready ? cObjBase::ob_count() : 0;
    }
    std::uint32_t census_;
    std::optional<cTypesBack> types_;
};

struct cReadText {
    objref value;
    bool clean = false; // without errors
};

inline cReadText read_text(std::string const &text, bool comments) {
    cReadText reading;
    cat::ReadReport report;
    std::istringstream is(text);
    is.imbue(std::locale::classic());
    cAttrScan scan(is, false);
    scan.return_com(comments, nullptr);
    reading.clean = scan.scan_obj(reading.value, nullptr) == 0 && report.empty();
    std::string const misplaced = reader_test::misplaced(report, text);
    if (!misplaced.empty()) stop("an error at a position outside the text", text, misplaced);
    return reading;
}

// The exact text, and the number of omitted values.
inline std::string write_text(objref const &value, unsigned int &failed) {
    cat::ReadReport report; // receives their errors instead of the message output
    cat::ExactText const exact;
    std::ostringstream os;
    os.imbue(std::locale::classic());
    value->writeobj(os);
    failed = exact.failed();
    return os.str();
}

} // namespace fuzz
