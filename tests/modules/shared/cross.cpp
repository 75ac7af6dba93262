// Signals, slots, errors and objects between a module and a program.
#include "tests/modules/shared/cross.h"

#include "qrv/core/cobjd.h"
#include "qrv/diagnostics/cerr.h"
#include "tests/modules/shared/module.h"

namespace {

void count(int &number) {
    if (++number > 10) throw cErr(0x40000008, "too many");
}

class Here : public Cross {
  public:
    Here()
        : entry_(cRepoImpl::create(cRepoImpl::get(typeid(Cross)), "cross",
                                   static_cast<Cross *>(this), typeid(Cross), typeid(Here), "")) {}
    Here(Here const &) = delete;
    Here &operator=(Here const &) = delete;
    ~Here() override { cRepoImpl::release(entry_); }

    void fire() override { signal("from the module"); }
    void fail() override { throw cErr(0x40000009, "thrown in the module"); }
    objref value() override { return cat::of(2.5); }
    void listen(cSignal1<int &> const &to) override { to.connect(slot_); }

  private:
    cRepositoryEntry *entry_;
    cFunctionSlot1<int &, void (*)(int &)> slot_{count};
};

Here here;

} // namespace
