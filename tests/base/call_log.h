#pragma once
// The calls made so far, in order, as one string: "a;b(3);" and so on.

#include "qrv/base/csignal.h"

#include <functional>
#include <string>

struct CallLog {
    std::string text;
    std::string take() {
        std::string result;
        result.swap(text);
        return result;
    }
};

// A slot that writes its name into a log and then runs the action that the test gave it.
class LogSlot : public cSSBase0 {
  public:
    LogSlot(CallLog &log, std::string name, std::function<void()> what = {})
        : log_(log), name_(std::move(name)), then(std::move(what)) {}
    LogSlot(LogSlot const &) = delete;
    LogSlot &operator=(LogSlot const &) = delete;
    ~LogSlot() override { disconnect(); }

    void operator()() const override {
        if (isblocked()) return;
        BlockOnCall const self_block(this);
        log_.text += name_ + ";";
        auto const run = then; // the action may destroy the slot
        if (run) run();
    }

    using cSSBase::connect;
    using cSSBase::disconnect;

  private:
    CallLog &log_;
    std::string name_;

  public:
    std::function<void()> then;
};

// Reaches the protected part of a node, for tests of use counts and positions.
struct OpenConnection : cConnection {
    using cConnection::do_delete;
    using cConnection::lock_delete;
    using cConnection::unlock_delete;
};
