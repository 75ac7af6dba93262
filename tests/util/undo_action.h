#pragma once
// An undo action that logs its calls in a string, and runs the functions that a test sets.

#include "qrv/util/cundo.h"
#include "tests/support/fixture.h"

#include <climits>
#include <functional>
#include <stdexcept>

// Names the actions that a call is for. Null is for every action.
struct Named : cUndoInfoBase {
    explicit Named(std::string text) : name(std::move(text)) {}
    std::string name;
};

class Action : public cUndo {
  public:
    Action(std::string &log, std::string name, int cost = 1)
        : name_(std::move(name)), log_(log), cost_(cost) {}
    Action(Action const &) = default;
    Action &operator=(Action const &) = delete;
    ~Action() override {
        log_ += "~" + name_ + "; ";
        if (at_end) at_end();
    }

    bool undo(cUndoInfoBase *info) override {
        log_ += "undo " + name_ + "; ";
        bool const done = answers(info) && !refuses;
        if (!at_undo) return done;
        at_undo();
        log_ += name_ + " back; "; // the action must still exist here
        return done;
    }
    bool isfor(cUndoInfoBase *info) override {
        log_ += "isfor " + name_ + "; ";
        bool const answer = answers(info);
        if (at_isfor) at_isfor();
        return answer;
    }
    void spare1() override { log_ += "spare1; "; }
    int cost() override {
        log_ += "cost " + name_ + "; ";
        int const asked = cost_;
        if (at_cost) at_cost();
        return asked;
    }
    void spare2() override { log_ += "spare2; "; }

    void cost(int other) { cost_ = other; }

    bool refuses = false;
    std::function<void()> at_undo, at_isfor, at_cost, at_end;

  private:
    bool answers(cUndoInfoBase *info) const {
        auto const *const named = dynamic_cast<Named *>(info);
        return !info || (named && named->name == name_);
    }

    std::string name_;
    std::string &log_;
    int cost_;
};

// A list of undo actions, and the log of their calls.
class Undo : public QrvTest {
  protected:
    // A new action, added to the list.
    Action *add(std::string const &name, int cost = 1) { return add(*list, name, cost); }
    Action *add(cUndoGlobalList &to, std::string const &name, int cost = 1) {
        auto *const action = new Action(log, name, cost);
        EXPECT_TRUE(to.add(action));
        log.clear();
        return action;
    }
    // The names in order. find() calls isfor() of each action for this; the log stays unchanged.
    std::string names(cUndoGlobalList &of) {
        EXPECT_EQ(of.broken_rule(), "");
        std::string const before = log;
        log.clear();
        Named nobody("nobody");
        EXPECT_EQ(of.find(&nobody), nullptr);
        std::string found;
        for (std::size_t at = 0; (at = log.find("isfor ", at)) != std::string::npos;) {
            at += 6;
            found += log.substr(at, log.find(';', at) - at);
        }
        log = before;
        return found;
    }
    std::string names() { return names(*list); }
    std::string take_log() { return std::exchange(log, {}); }

    std::string log;
    std::unique_ptr<cUndoGlobalList> list = std::make_unique<cUndoGlobalList>(true);
};
