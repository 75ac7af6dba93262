#pragma once
// Limits the work of merging while text is read, and prevents cycles.
//
// A few bytes of text can merge or assign large values into each other again and again through back
// references, and can name a value inside itself. A program may do both; a file must not. So the
// reader installs a budget for its outermost read. While one is installed, all code that stores a
// part into a value of the tree (attrcopy, the assign of a set, the copying of attribute sets)
// charges it and calls merge_allows() first. Without a budget nothing is counted and nothing
// refused.
//
// These steps are charged: each key pair of a source, each appended value, each value that the
// cycle test visits, and what an attribute set gets from its declaration without any text: each
// attribute, and each part of a container that is a default. A merge is skipped as a whole if the
// budget is too small for its pairs. If a merge exceeds the limit on its way, its remaining steps
// are skipped.
//
// A plain pointer leads to the installed budget; the innermost one counts. No QRV_API: only the
// reader and the containers use this.

#include "qrv/core/cobj.h"

#include <cstdint>

namespace cat {
class cMergeBudget {
  public:
    explicit cMergeBudget(std::uint64_t limit) noexcept; // installs itself
    cMergeBudget(cMergeBudget const &) = delete;
    cMergeBudget &operator=(cMergeBudget const &) = delete;
    virtual ~cMergeBudget(); // installs the previous one again

    void set_limit(std::uint64_t limit) noexcept { limit_ = limit; } // grows with the text read
    std::uint64_t spent() const noexcept { return spent_; }
    bool exhausted() const noexcept { return spent_ > limit_; }
    bool charge(std::uint64_t units) noexcept; // false beyond the limit
    // Could this many units be charged? Charges nothing; if false, the limit counts as exceeded.
    bool affords(std::uint64_t units) noexcept;

    // Called when `value` was not stored under `key` of `holder`, because it is the holder or owns
    // it. The reader reports it. The key is null for a value that was to be appended.
    virtual void left_out(cObj &holder, objref const &key, objref const &value);

    static cMergeBudget *current() noexcept;

  private:
    cMergeBudget *before_;
    std::uint64_t limit_;
    std::uint64_t spent_ = 0;
};

// Guard: installs this budget until the end of the scope; null installs none. Borrows the budget.
class cMergeBudgetUse {
  public:
    explicit cMergeBudgetUse(cMergeBudget *budget) noexcept;
    cMergeBudgetUse(cMergeBudgetUse const &) = delete;
    cMergeBudgetUse &operator=(cMergeBudgetUse const &) = delete;
    ~cMergeBudgetUse();

  private:
    cMergeBudget *before_;
};

// May value be stored in holder? True without a budget. Charges 1 and the walk of the cycle test.
// False, without an error, beyond the limit. For a value that is the holder or owns it, calls
// left_out() and returns false.
bool merge_allows(cObj &holder, objref const &key, objref const &value);
// Charges steps that store nothing. True without a budget, false beyond the limit.
bool merge_charge(std::uint64_t units = 1) noexcept;
// True when a budget is installed and used up.
bool merge_exhausted() noexcept;
// Like value->is_owner_of(other), but charges the budget; false for null and void values.
bool owns_charged(objref const &value, cObj const &other);
} // namespace cat
