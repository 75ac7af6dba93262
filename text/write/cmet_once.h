#pragma once
// Values that can occur only once, which need no entry in the table of written objects.
//
// While no user code runs, a value that only its node owns occurs once, if its container and hash
// have one owner each. Such values aren't entered. But user code can write a container again, or
// share a value. So before it first runs in an outermost write, one walk enters everything written
// so far, and from then on each value is entered.
//
// The same holds for the containers that are being written, to which exact text can't refer.

#include "qrv/core/cattrhash.h"

struct cExactTables;

// A container being written. They form a stack.
class cOpenContainer {
  public:
    // Borrows; the holder and, outside exact text, the tables may be null. listed: written without
    // keys. lone: the holder and its hash have one owner each. composed: the output runs no user
    // code.
    struct cAbout {
        cObj const *holder;
        cExactTables *tables;
        bool listed;
        bool lone;
        bool composed;
    };
    cOpenContainer(cAttrHash const &hash, cAbout const &about);
    cOpenContainer(cOpenContainer const &) = delete;
    cOpenContainer &operator=(cOpenContainer const &) = delete;
    ~cOpenContainer();

    void begin_entry(cAttrNode const &node) noexcept {
        now_ = &node;
        stage_ = cStage::key;
    }
    // Whether the caller must look up the value and enter it. If not, it counts as entered from
    // here on.
    bool is_entered_by_caller(cObj const &value) noexcept {
        if (value.refs() != 1 || enters_all()) return true;
        stage_ = cStage::value;
        return false;
    }
    void end_value() noexcept { stage_ = cStage::done; } // it and everything below it is written
    bool enters_all() const noexcept { return !about_.lone || enter_all; }

  private:
    friend void enter_written_so_far();
    enum class cStage : unsigned char { key, value, done };

    void mark_open();

    static constinit cOpenContainer *innermost;
    static constinit bool enter_all; // also values with one owner

    cAttrHash const *hash_;
    cAbout about_;
    cOpenContainer *outer_;
    cAttrNode const *now_ = nullptr; // the entry being written
    size_t keys_;                    // in the container's path
    cStage stage_ = cStage::key;
    bool marked_ = false; // in the table of open containers
};

// Does nothing outside of an outermost write, and after the first time in one.
void enter_written_so_far();
