// Actions in the process's undo lists when it ends: those of the redo list are destroyed first,
// each list from its front, after the program's static objects and while the core and the message
// output still exist.

#include "process.h"
#include "qrv/containers/cattr.h"
#include "qrv/core/ceros.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/read/cattrscan.h"
#include "qrv/text/write/cwriter.h"
#include "qrv/util/cundo.h"

#include <iostream>

namespace {

bool in_child = false;

void show(char const *text) { say(text); }

// Holds a value, and uses as much of the library as it can in its destructor.
class Edit : public cUndo {
  public:
    explicit Edit(char const *text) { cObj::readobj(text, value_); }
    Edit(Edit const &) = delete;
    Edit &operator=(Edit const &) = delete;
    ~Edit() override {
        bool const alive = cat::core_state() == cat::cCoreState::ready &&
                           cat::sig_error().isconnected(cat::errhandler());
        std::cerr << '[' << (alive ? cat::as_text(value_) : "too late") << ']' << std::flush;
        if (!(*value_)["tell"].getattr()->is_good()) return;
        cErrStream error(0x40000000);
        error << "an error";
        cat::sig_error()(error);
    }

    bool undo(cUndoInfoBase *) override { return true; }
    bool isfor(cUndoInfoBase *) override { return true; }
    void spare1() override {}
    int cost() override { return 1; }
    void spare2() override {}

  private:
    objref value_;
};

// Never destroyed, so it still listens when the lists are destroyed.
cFunctionSlot1<char const *, void (*)(char const *)> *last_listener = nullptr;

struct cStatic {
    cStatic() = default;
    cStatic(cStatic const &) = delete;
    cStatic &operator=(cStatic const &) = delete;
    ~cStatic() {
        if (in_child) std::cerr << "[static object]";
    }
} const program;

cUndoGlobalList kept(true); // destroyed with the program; shares actions with redoGlobalList

int child() {
    in_child = true;
    last_listener = new cFunctionSlot1<char const *, void (*)(char const *)>(show);
    sig_idle();
    cOutSigStreambuf.sig().connect(*last_listener);
    for (char const *text : {"{u= 1; }", "{u= 2; tell= 1; }"}) undoGlobalList.add(new Edit(text));
    for (char const *text : {"{r= 1; }", "{r= 2; }"}) redoGlobalList.add(new Edit(text));
    kept = redoGlobalList;
    kept.add(new Edit("{kept= 1; }"));
    return 0;
}

} // namespace

int main(int argc, char **) {
    if (argc > 1) return child();
    cResult const result = run_self("child");
    CHECK(result.status == 0);
    CHECK_TEXT(result.output, "[{kept= 1; }][static object]"
                              "[{r= 2; }][{r= 1; }]"
                              "[{u= 2; tell= 1; }]"
                              "an error\n"
                              "[{u= 1; }]"
                              "Quorvanta unloaded\n");
    return failures != 0;
}
