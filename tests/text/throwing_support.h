#pragma once
// A slot that throws, for sweeps over all errors of a reading.

#include "qrv/core/ceros.h"
#include "qrv/text/read/cattrscan.h"

namespace reader_test {

// Throws at the n-th error of any kind.
class cThrowing {
  public:
    explicit cThrowing(int n) : left_(n), slot_(this, &cThrowing::count) {
        cat::sig_error().connect(slot_);
    }
    cThrowing(cThrowing const &) = delete;
    cThrowing &operator=(cThrowing const &) = delete;
    ~cThrowing() = default;
    void watch(cAttrScan &scan) { scan.sig().connect(slot_); }
    bool thrown() const { return left_ <= 0; }

  private:
    void count(cErr &error) {
        if (--left_ == 0) throw cErr(error);
    }
    int left_;
    cSlot1<cThrowing, cErr &> slot_;
};

} // namespace reader_test
