#pragma once
// Guard: passes errors that are raised by cat::sig_error() to a function, instead of printing or
// throwing them.

#include "qrv/core/ceros.h"

#include <functional>

class cRaisedErrors {
  public:
    explicit cRaisedErrors(std::function<void(cErr const &)> take)
        : before_(cat::errhandler()), take_(std::move(take)),
          slot_(this, &cRaisedErrors::hand_over) {
        cat::errhandler() = cErrHandler(0, 0, 0xFFFFFFFFu);
        cat::sig_error().connect(slot_);
    }
    cRaisedErrors(cRaisedErrors const &) = delete;
    cRaisedErrors &operator=(cRaisedErrors const &) = delete;
    ~cRaisedErrors() { cat::errhandler() = before_; }

  private:
    void hand_over(cErr &error) { take_(error); }

    cErrHandler before_;
    std::function<void(cErr const &)> take_;
    cSlot1<cRaisedErrors, cErr &> slot_;
};
