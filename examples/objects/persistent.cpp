// Counts runs in a map that is stored in a file. A cPersistentMap reads its file when the map is
// first used, and writes it in its destructor. Here one process performs three runs, and damages
// the file before the third one. At the end it removes its files.
#include "qrv/base/cfilename.h"
#include "qrv/containers/cattr.h"
#include "qrv/core/cobjd.h"
#include "qrv/diagnostics/cconsole.h"
#include "qrv/text/file/cfile.h"
#include "qrv/text/file/cpersistentmap.h"
#include "qrv/text/read/creadreport.h"

#include <cstdio>
#include <fstream>
#include <iostream>

namespace {
void run(char const *who) {
    cPersistentMap kept("persistent_example.attr", true); // true: preserves the file's comments
    cMapObj &map = kept.busmap();                         // empty if the file does not exist
    int runs = 0;
    cat::int_of(map["runs"], runs); // stays 0 if the entry does not exist
    map["runs"] = cat::of(++runs);
    map["last"] = cat::of(who);
    std::cout << "run " << runs << " by " << who << '\n';
} // the destructor of `kept` saves the file; after a crash, the old or the new file is complete
} // namespace

int main(int, char **argv) {
    sig_idle();
    cConsoleDisplay display;
    std::string const file = extractDirName(argv[0]) + "persistent_example.attr";
    std::string const kept = file + ".bad";
    for (std::string const &name : {file, kept}) std::remove(name.c_str());

    run("Ada");
    run("Ben");
    std::cout << cat::file2string(file.c_str()) << "\n\n";

    // A damaged file is copied before it is written again.
    std::ofstream(file) << "{ runs= 2; last= Cleo; // the bracket is missing\n";
    cat::ReadReport report; // collects the errors, which would be printed otherwise
    run("Dan");
    std::cout << "error   " << report.entries().front().text << '\n';
    std::cout << "kept    " << cat::file2string(kept.c_str());
    std::cout << "now     " << cat::file2string(file.c_str()) << '\n';
    for (std::string const &name : {file, kept}) std::remove(name.c_str());
    return 0;
}
