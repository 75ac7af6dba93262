// A program linked with the static library, whose static initialisation comes first. It requests
// the text of null, of an object without a type, and of a key in an error, each time before the
// object core is started. The last three ways are those that the layers below text/ use.

#include "core/ctext_hooks.h"
#include "process.h"
#include "qrv/core/ceros.h"
#include "qrv/core/ctypeobj.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/write/cwriter.h"

#include <sstream>
#include <string>

namespace {

bool started() { return cat::core_state() != cat::cCoreState::none; }

objref const untyped = objref::adopt(new cObj(false));

std::string first(std::string const &way) {
    if (started()) return "started already";
    if (way == "none") return cat::as_text(nullptr) + cat::as_string(nullptr);
    if (way == "error") return eros_setattr(*untyped, nullptr).as_string();
    if (way == "text") return cat::as_text(untyped);
    if (way == "string") return cat::as_string(untyped);
    if (way == "hook of text") return text_hooks.as_text(untyped);
    if (way == "hook of string") return text_hooks.as_string(untyped);
    std::ostringstream os;
    (void)(way == "stream" ? untyped->writeobj(os) : text_hooks.writeobj(*untyped, os));
    return os.str();
}

// Static initialisation has no arguments, so a child process reads from the environment which way
// comes first.
char const *const way = std::getenv("QRV_TEST_WAY");
std::string const early = way ? first(way) : std::string();
bool const early_started = started();

std::string of_child(char const *name) {
    return run_self("child", {{"QRV_TEST_WAY", name}}).output;
}

} // namespace

int main(int argc, char **) {
    if (argc > 1) {
        std::printf("%s%s\n", early.c_str(), early_started ? " [core]" : "");
        return failures != 0;
    }
    CHECK(!early_started);
    CHECK_TEXT(of_child("none"), "\n");
    std::string const comment = "niltype(/* id=1, refs=1 */) [core]\n";
    CHECK_TEXT(of_child("error"), "Setattr in object type 'niltype', key '':  [core]\n");
    for (char const *name :
         {"text", "string", "stream", "hook of text", "hook of string", "hook of stream"})
        CHECK_TEXT(of_child(name), comment);
    return failures != 0;
}
