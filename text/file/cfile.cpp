// Functions for object trees in files, and for white space.
//
// Saving composes the whole text in memory before it changes the file. So the old file stays as it
// was if a value throws while it is written, if the disk is full, or if the process is killed.

#include "qrv/text/file/cfile.h"

#include "base/platform/cchars.h"
#include "diagnostics/cerr_codes.h"
#include "diagnostics/cerrline.h"
#include "qrv/base/platform/cplatform.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobj.h"
#include "qrv/text/read/cattrscan.h"
#include "text/file/cfile_scan.h"
#include "text/read/creader_session.h"
#include "text/read/csource_recorder.h"

#include <algorithm>
#include <fstream>
#include <locale>
#include <sstream>

namespace {

constexpr char const *signature_lines = "// Platform Quorvanta(R), Attributes version 2.0\n"
                                        "// by the Quorvanta developers\n"
                                        "\n";

std::string::size_type first_black(std::string const &text) {
    auto const at = std::find_if_not(text.begin(), text.end(), is_space);
    return static_cast<std::string::size_type>(at - text.begin());
}

// Opens the file and calls `read` with its scanner. False if the file can't be opened, or if errors
// were counted.
template <class Read> bool scan_file(char const *name, Read const &read) {
    cFileScan file(name, false);
    if (!file.opened()) return false;
    read(file.scan());
    return file.scan().errcount() == 0;
}

} // namespace

bool write2file(cObj const &obj, char const *name, bool signature) {
    if (!name) name = "";
    if (!cat::can_write_file(name)) {
        cat::put_error_line(std::string("Cannot open file for write: ") += name);
        return false;
    }
    std::ostringstream os;
    os.imbue(std::locale::classic());
    if (signature) os << signature_lines;
    obj.writeobj(os); // RUNS USER CODE, may throw
    return os.good() && cat::replace_file(name, os.view());
}

bool file2obj(char const *name, objref &ref) {
    return scan_file(name, [&ref](cAttrScan &scan) { scan.scan_obj(ref, nullptr); });
}

// The assignment is a part of the reading, since the text can determine what a type's own `assign`
// does. So it loads no modules, and its errors are added to an existing report. But the budget for
// merges does not limit it, since the program requests it, not the text.
bool file2map(char const *name, cMapObj &map) {
    return scan_file(name, [&map](cAttrScan &scan) {
        cat::cMergeBudget *const budget = cat::cMergeBudget::current();
        cReading const reading(scan);
        objref value;
        scan.scan_obj(value, nullptr);
        cAboutValue const about_value(*cReadSession::current());
        cat::cMergeBudgetUse const as_before(budget);
        map.assign(value); // RUNS USER CODE
        auto *const source = cat::cSourceRecorder::at(scan);
        if (source && value) source->moved_inside(*value, map);
    });
}

std::string cat::file2string(char const *name) {
    if (!name) {
        cat::put_error_line("No file pointer in file2string");
        return {};
    }
    std::ifstream in;
    in.imbue(std::locale::classic());
    in.open(name, std::ios::in | std::ios::binary);
    if (!in.is_open() || cat::is_directory(name)) {
        cat::put_error_line(std::string(err_file_not_opened.text) += name);
        return {};
    }
    std::string text;
    if (!read_rest(in, text)) cat::put_error_line(std::string("Read error in file: ") += name);
    return text;
}

void cat::wsp_rmleft(std::string &text) { text.erase(0, first_black(text)); }

void cat::wsp_rmright(std::string &text) {
    while (!text.empty() && is_space(text.back())) text.pop_back();
}

bool cat::wsp_normalize(std::string &text) {
    auto const length = text.size();
    wsp_rmright(text);
    wsp_rmleft(text);
    auto const both_space = [](char a, char b) { return is_space(a) && is_space(b); };
    text.erase(std::unique(text.begin(), text.end(), both_space), text.end());
    std::replace_if(text.begin(), text.end(), is_space, ' ');
    return text.size() != length;
}

bool cat::wsp_only(std::string const &text) { return first_black(text) == text.size(); }

void cat::rmchar(std::string &text, char c) { std::erase(text, c); }
