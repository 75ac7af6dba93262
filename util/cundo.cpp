// The undo lists. The one danger is user code: undo(), isfor(), cost() and destructors may
// change or destroy the list that calls them. So
//
//   - a walk uses weak handles to its initial entries, and holds the one that it calls;
//   - actions are moved out of the list before they are deleted, and are deleted last;
//   - an operation that continues after user code has a cLife, which knows whether the list
//     still exists.
//
// All lists share one holder for an action; the action itself has a weak pointer to it. So adding
// an action to a second list, also from its own undo(), is as safe as copying the list.
//
// Rules, checked by broken_rule(), which calls no user code:
//   U1 no entry is null               U3 an inactive list is empty
//   U2 no action is listed twice      U4 an entry is the holder that the action knows

#include "qrv/util/cundo.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <utility>
#include <vector>

cUndoInfoBase::~cUndoInfoBase() = default;
cUndo::~cUndo() = default;

namespace {
// Empties a list in the defined order. RUNS USER CODE
template <class T> void delete_from_front(std::list<T> entries) {
    while (!entries.empty()) entries.pop_front();
}

template <class T> bool same_holder(std::weak_ptr<T> const &a, std::shared_ptr<T> const &b) {
    return !a.owner_before(b) && !b.owner_before(a);
}
} // namespace

// Knows whether a list still exists: it shares a word with the list, whose destructor clears that
// word.
class cUndoGlobalList::cLife {
  public:
    explicit cLife(cUndoGlobalList &list) : list_(list.life_) {
        if (!list_) list_ = list.life_ = std::make_shared<cUndoGlobalList const *>(&list);
    }
    cLife(cLife const &) = delete;
    cLife &operator=(cLife const &) = delete;
    ~cLife() = default;

    cUndoGlobalList const *list() const noexcept { return *list_; } // null when destroyed

  private:
    std::shared_ptr<cUndoGlobalList const *> list_;
};

class cUndoGlobalList::cWalk {
  public:
    explicit cWalk(cUndoGlobalList &list)
        : removed_(list.removed_), handles_(list.entries_.begin(), list.entries_.end()),
          life_(list) {}
    cWalk(cWalk const &) = delete;
    cWalk &operator=(cWalk const &) = delete;
    ~cWalk() = default;

    // The next action that is still in the list; valid until the next call. RUNS USER CODE: may
    // delete the previous one.
    cUndo *next() {
        current_.reset();
        while (life_.list() && at_ < handles_.size()) {
            current_ = handles_[at_++].lock();
            if (current_ && is_listed()) return current_.get();
            current_.reset();
        }
        return nullptr;
    }

    // Whether the result of next() is still in the list.
    bool is_listed() const noexcept {
        cUndoGlobalList const *const list = life_.list();
        return list && (list->removed_ == removed_ || list->holds(current_.get()));
    }

  private:
    std::size_t const removed_; // the list's count: while it is the same, all are still listed
    std::vector<std::weak_ptr<cUndo>> const handles_;
    std::size_t at_ = 0;
    cHolder current_;
    cLife const life_;
};

cUndoGlobalList::cUndoGlobalList(bool isundo) : isundo_(isundo) {}

cUndoGlobalList::cUndoGlobalList(cUndoGlobalList const &other)
    : active_(other.active_), isundo_(other.isundo_), entries_(other.entries_) {}

cUndoGlobalList &cUndoGlobalList::operator=(cUndoGlobalList const &other) {
    cEntries copy(other.entries_); // the step that may fail comes first
    cEntries before = take_all();
    entries_.swap(copy);
    active_ = other.active_;
    isundo_ = other.isundo_;
    check();
    delete_from_front(std::move(before)); // RE-ENTERS: last look at *this
    return *this;
}

cUndoGlobalList::~cUndoGlobalList() {
    if (life_) *life_ = nullptr;
    do {
        active_ = false; // the destructors of actions find an inactive list,
        delete_from_front(take_all());
    } while (!entries_.empty()); // unless they activate it again
}

void cUndoGlobalList::setActive(bool active) {
    active_ = active;
    if (!active) delete_from_front(take_all()); // RE-ENTERS: last look at *this
}

bool cUndoGlobalList::add(cUndo *action) {
    if (!active_ || !action) return false; // 1
    if (holds(action)) return true;
    cHolder const keep = action->holder_.lock(); // held until the return if another list has it
    if (action->taken_ && !keep) return false;   // its destructor is running
    if (!make_room()) return false;              // 2  RE-ENTERS: the list may be destroyed
    if (!holds(action)) insert(action);          // 3
    return true;
}

// Does at most as many passes as the list had entries, so actions that add others can't prolong it.
// False if actions deactivated or destroyed the list.
bool cUndoGlobalList::make_room() {
    cLife const life(*this);
    for (std::size_t passes = entries_.size(); passes > 0; --passes) {
        if (costs() < cost_limit || !life.list() || entries_.empty()) break; // RE-ENTERS: costs
        delete_from_front(take_out(entries_.back().get()));                  // RE-ENTERS
        if (!life.list()) break;
    }
    return life.list() && active_;
}

// All steps that may fail come before the action is owned, so that the caller still owns it on
// failure.
void cUndoGlobalList::insert(cUndo *action) {
    cEntries node(1);
    node.front() = action->holder_.lock();
    if (!node.front()) {
        auto const owner = std::make_shared<std::unique_ptr<cUndo>>();
        owner->reset(action);
        node.front() = cHolder(owner, action);
        action->holder_ = node.front();
        action->taken_ = true;
    }
    entries_.splice(entries_.begin(), node);
    check();
}

void cUndoGlobalList::makeUndo(cUndoInfoBase *info) {
    cEntries done;
    cWalk walk(*this);
    while (cUndo *const action = walk.next()) {
        if (!action->undo(info)) continue; // RE-ENTERS: the list may be destroyed
        if (walk.is_listed()) done = take_out(action);
        return;
    }
}

cUndo *cUndoGlobalList::find(cUndoInfoBase *info) {
    cWalk walk(*this);
    while (cUndo *const action = walk.next())
        if (action->isfor(info) && walk.is_listed()) return action;
    return nullptr;
}

bool cUndoGlobalList::fIsUndo(cUndoInfoBase *info) { return find(info) != nullptr; }

void cUndoGlobalList::remove(cUndo *action) {
    delete_from_front(take_out(action)); // RE-ENTERS: last look at *this
}

// In 64 bits: each cost has 32, and the memory has no room for enough actions to overflow it.
std::int64_t cUndoGlobalList::costs() {
    std::int64_t sum = 0;
    cWalk walk(*this);
    while (cUndo *const action = walk.next()) sum += action->cost();
    return sum;
}

// Empty if the action isn't in this list.
cUndoGlobalList::cEntries cUndoGlobalList::take_out(cUndo const *action) {
    cEntries taken;
    auto const place = place_of(action);
    if (place == entries_.end()) return taken;
    taken.splice(taken.begin(), entries_, place);
    ++removed_;
    check();
    return taken;
}

cUndoGlobalList::cEntries cUndoGlobalList::take_all() noexcept {
    cEntries taken;
    taken.swap(entries_);
    ++removed_;
    return taken;
}

cUndoGlobalList::cEntries::const_iterator
cUndoGlobalList::place_of(cUndo const *action) const noexcept {
    return std::find_if(entries_.begin(), entries_.end(),
                        [action](cHolder const &entry) { return entry.get() == action; });
}

std::string cUndoGlobalList::broken_rule() const {
    std::vector<cUndo const *> actions;
    for (cHolder const &entry : entries_) {
        if (!entry) return "U1 null";
        if (!same_holder(entry->holder_, entry) || !entry->taken_) return "U4 another holder";
        actions.push_back(entry.get());
    }
    std::sort(actions.begin(), actions.end());
    if (std::adjacent_find(actions.begin(), actions.end()) != actions.end())
        return "U2 listed twice";
    if (!active_ && !entries_.empty()) return "U3 inactive and not empty";
    return {};
}

// Checks a large list only at intervals, so that filling it stays fast in checking builds too.
void cUndoGlobalList::check() const {
#ifdef QRV_CHECKS
    if (entries_.size() > 256 && entries_.size() % 256 != 0) return;
    if (std::string const rule = broken_rule(); !rule.empty()) {
        std::fprintf(stderr, "qrv: broken rule of an undo list: %s\n", rule.c_str());
        std::abort();
    }
#endif
}
