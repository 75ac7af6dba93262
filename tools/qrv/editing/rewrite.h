#pragma once
// Writes the first value of a file, changed or unchanged: the whole file anew, or only the changed
// bytes.

#include "qrv/core/cobj.h"
#include "qrv/edit/cedit.h"
#include "qrv/text/read/csourcemap.h"
#include "tools/qrv/output/messages.h"
#include "tools/qrv/output/target.h"

#include <functional>
#include <string>

// The destination of the result: standard output, unless an option is set.
struct cWriteOptions {
    bool check = false; // write nothing
    bool diff = false;  // print the changes as a diff
    bool in_place = false;
    bool force = false; // replace the file even if data is lost
    std::string output; // write this file; - is standard output
    cTargetOptions target;
    bool canonical = false;
    bool trailing_blanks = false; // keep the trailing blanks that the writer produces
    bool reformat = false;        // write the whole file anew, not only the changed bytes
    int max_errors = default_max_errors;
};

// The file to be changed. A change may run several times, each time on a new reading.
struct cChanging {
    objref value;
    std::string const &bytes;  // the bytes of the file
    cat::SourceMap const &map; // of these bytes
    qrv::edit::Edit *edit;     // replaces the changed bytes; null if the file is written anew
};

// Makes the change. If it returns false, with lines in `errors`, nothing is written. If the file is
// written anew, a change that fails runs once more, on a new reading.
using cChange = std::function<bool(cChanging const &file, std::string &errors)>;

// Reads, changes and writes the file by the options. Returns the exit code.
int rewrite(std::string const &name, cWriteOptions const &options, cChange const &change);
