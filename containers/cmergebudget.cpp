// The installed budgets form a list through the stack of their owners.

#include "containers/cmergebudget.h"

#include <algorithm>
#include <utility>

namespace {
constinit cat::cMergeBudget *installed = nullptr;
}

cat::cMergeBudget::cMergeBudget(std::uint64_t limit) noexcept : before_(installed), limit_(limit) {
    installed = this;
}

cat::cMergeBudget::~cMergeBudget() { installed = before_; }

bool cat::cMergeBudget::affords(std::uint64_t units) noexcept {
    if (spent_ <= limit_ && units <= limit_ - spent_) return true;
    spent_ = std::max(spent_, limit_ + 1);
    return false;
}

bool cat::cMergeBudget::charge(std::uint64_t units) noexcept {
    spent_ += units;
    return !exhausted();
}

void cat::cMergeBudget::left_out(cObj &, objref const &, objref const &) {}

cat::cMergeBudget *cat::cMergeBudget::current() noexcept { return installed; }

cat::cMergeBudgetUse::cMergeBudgetUse(cMergeBudget *budget) noexcept
    : before_(std::exchange(installed, budget)) {}

cat::cMergeBudgetUse::~cMergeBudgetUse() { installed = before_; }

bool cat::merge_allows(cObj &holder, objref const &key, objref const &value) {
    cMergeBudget *const budget = installed;
    if (!budget) return true;
    if (!budget->charge(1)) return false;
    bool const cycle = value == &holder || owns_charged(value, holder);
    if (budget->exhausted()) return false; // the walk may have stopped early
    if (cycle) budget->left_out(holder, key, value);
    return !cycle;
}

bool cat::merge_charge(std::uint64_t units) noexcept {
    return !installed || installed->charge(units);
}

bool cat::merge_exhausted() noexcept { return installed && installed->exhausted(); }
