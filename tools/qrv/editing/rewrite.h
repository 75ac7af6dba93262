#pragma once
// The first value of a file, changed or as it is, written anew or with the changed bytes replaced.

#include "qrv/core/cobj.h"
#include "qrv/edit/cedit.h"
#include "qrv/text/read/csourcemap.h"
#include "tools/qrv/output/messages.h"
#include "tools/qrv/output/target.h"

#include <functional>
#include <string>

// Where the result is written: to standard output, unless an option names something else.
struct cWriteOptions {
    bool check = false; // nowhere
    bool diff = false;  // what changes, as a diff, to standard output
    bool in_place = false;
    bool force = false; // a file is replaced even where something is lost
    std::string output; // a file of that name; - is standard output
    cTargetOptions target;
    bool canonical = false;
    bool trailing_blanks = false; // as the writer leaves them
    bool reformat = false;        // the whole file anew, instead of the changed bytes
    int max_errors = default_max_errors;
};

// What is to be changed. The change may be made several times, each time in a new reading.
struct cChanging {
    objref value;
    std::string const &bytes;  // that it was read from
    cat::SourceMap const &map; // of these bytes
    qrv::edit::Edit *edit;     // that replaces the changed bytes; null if the file is written anew
};

// False, with lines in `errors`: nothing is written. If the file is written anew, a change that
// fails is made once more, in a new reading.
using cChange = std::function<bool(cChanging const &file, std::string &errors)>;

// Reads, changes and writes by the options. The exit code.
int rewrite(std::string const &name, cWriteOptions const &options, cChange const &change);
