#pragma once
// What merging may cost while text is read, and the guard against cycles there.
//
// A text of a few bytes can merge or assign large values into each other again and again through
// back references, and can name a value inside itself. A program may do both; a file must not. So
// the reader installs a budget for its outermost read. While one is installed, everything that
// stores a part into a value that stands in the tree already (attrcopy, the assign of a set, the
// copying of attribute sets) charges it and asks allows() first. Without a budget nothing is
// counted and nothing refused.
//
// Charged: each key pair of a source, each value appended, each value that the cycle test walks,
// and what an attribute set gets from its declaration, which costs no text: each attribute, and
// each part of a container that is a default. A merge whose own pairs can't be paid for is left out
// as a whole. Once the limit is passed on the way, every later step is left out, so a merge ends
// where it stands.
//
// The installed one is found through a plain pointer; the innermost counts. No QRV_API: this is
// between the reader and the containers.

#include "qrv/core/cobj.h"

#include <cstdint>

namespace cat {
class cMergeBudget {
  public:
    explicit cMergeBudget(std::uint64_t limit) noexcept; // installs itself
    cMergeBudget(cMergeBudget const &) = delete;
    cMergeBudget &operator=(cMergeBudget const &) = delete;
    virtual ~cMergeBudget(); // the one before is back

    void set_limit(std::uint64_t limit) noexcept { limit_ = limit; } // grows with the text read
    std::uint64_t spent() const noexcept { return spent_; }
    bool exhausted() const noexcept { return spent_ > limit_; }
    bool charge(std::uint64_t units) noexcept; // false beyond the limit
    // Could so many be charged? Charges nothing; if not, the limit counts as passed.
    bool affords(std::uint64_t units) noexcept;

    // `value` was not stored under `key` of `holder`, because it is the holder or owns it. The
    // reader reports it; the key is null where a value was to be appended.
    virtual void left_out(cObj &holder, objref const &key, objref const &value);

    static cMergeBudget *current() noexcept;

  private:
    cMergeBudget *before_;
    std::uint64_t limit_;
    std::uint64_t spent_ = 0;
};

// While it lives this budget is the installed one; null: none is. Borrows it.
class cMergeBudgetUse {
  public:
    explicit cMergeBudgetUse(cMergeBudget *budget) noexcept;
    cMergeBudgetUse(cMergeBudgetUse const &) = delete;
    cMergeBudgetUse &operator=(cMergeBudgetUse const &) = delete;
    ~cMergeBudgetUse();

  private:
    cMergeBudget *before_;
};

// May value be stored in holder? True without a budget. Charges 1 and the walk of the cycle test;
// false beyond the limit, silently, and for a value that is the holder or owns it, after
// left_out().
bool merge_allows(cObj &holder, objref const &key, objref const &value);
// Steps that store nothing by themselves. True without a budget, false beyond the limit.
bool merge_charge(std::uint64_t units = 1) noexcept;
// True when a budget is installed and used up.
bool merge_exhausted() noexcept;
// Does value hold `other` anywhere below? As is_owner_of; null and void values don't. Charges.
bool owns_charged(objref const &value, cObj const &other);
} // namespace cat
