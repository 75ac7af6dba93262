#pragma once
// Undoable actions. A program derives its actions from cUndo, identifies them by a class derived
// from cUndoInfoBase, and stores the actions in two lists, undoGlobalList and redoGlobalList. The
// lists do not know what an action does: they hold the newest first, delete the oldest when the
// total cost is too high, and find the action that matches an info.
//
// The lists that contain an action own it. Copies of a list share its actions, and so does a second
// list to which an action is added. An action is deleted when it is removed from its last list: by
// remove(), makeUndo(), setActive(false), an add() that needs room, an assignment, or the
// destruction of the list.
//
// Every function of an action is USER CODE: it may change or destroy any list, call the same
// function again, or throw. A walk calls the actions that were in the list at its start; it skips
// those removed meanwhile, and deletes the current one only after its function has returned.
// Actions are deleted after they are removed from the list, so their destructors find the list in a
// valid state.
//
// Limits: create actions by new; only the lists may delete an action that they accepted. At the end
// of the process redoGlobalList is destroyed first, then undoGlobalList, both before the core and
// the message output; the destructor of an action in undoGlobalList must not use redoGlobalList.

#include "qrv/ccomp.h"

#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <string>

class QRV_API cUndoGlobalList;

// Identifies actions, by its derived classes. The lists only pass it on, null too.
class QRV_API cUndoInfoBase {
  public:
    cUndoInfoBase() = default;
    cUndoInfoBase(cUndoInfoBase const &) {}
    cUndoInfoBase &operator=(cUndoInfoBase const &) { return *this; }
    virtual ~cUndoInfoBase();
};

// One action. A copy is in no list.
class QRV_API cUndo {
  public:
    virtual bool undo(cUndoInfoBase *info) = 0;  // true: done, and the list removes the action
    virtual bool isfor(cUndoInfoBase *info) = 0; // whether the action belongs to this info
    virtual void spare1() = 0;                   // never called by the library
    virtual int cost() = 0;                      // in the program's unit, such as bytes; may change
    virtual void spare2() = 0;                   // never called by the library
    virtual ~cUndo();

  protected:
    cUndo() = default;
    cUndo(cUndo const &) {}
    cUndo &operator=(cUndo const &) { return *this; }

  private:
    friend class cUndoGlobalList;
    friend struct cUndoProbe;

    std::weak_ptr<cUndo> holder_; // shared by all lists
    bool taken_ = false;          // by a list; if holder_ is empty then, the destructor is running
};

class QRV_API cUndoGlobalList {
  public:
    // The total cost of a list must be below this before the next action is added: 32 MiB, if costs
    // are bytes. A new action is accepted at any cost, so that the last step can always be undone.
    static constexpr std::int64_t cost_limit = 0x2000000;

    explicit cUndoGlobalList(bool isundo); // the kind: undo or redo
    // The copy shares the actions. A move is a copy.
    cUndoGlobalList(cUndoGlobalList const &other);
    // Becomes a copy of `other`. Releases the former actions, and deletes those in no other list,
    // since nothing else could. RUNS USER CODE after everything is copied.
    cUndoGlobalList &operator=(cUndoGlobalList const &other);
    ~cUndoGlobalList(); // from the front. RUNS USER CODE

    bool fActive() const noexcept { return active_; }
    bool fIsUndo() const noexcept { return isundo_; } // the list's kind, as constructed

    // An inactive list accepts no actions, and at once releases those it has, from the front. False
    // and then true clears a list.   RUNS USER CODE
    void setActive(bool active);

    // Adopts the action and inserts it at the front. First releases the oldest, one by one, until
    // the total cost is below the limit; calls cost() of all actions each time, except the new one.
    // Also returns true, without a change, for an action that is in this list already. False if the
    // list is inactive (or becomes so meanwhile), for null and for an action that is being deleted:
    // the caller then still owns it, and also if cost() throws.   O(n)
    bool add(cUndo *action); // RUNS USER CODE

    // Calls undo(info), the newest action first, until one returns true; removes and deletes that
    // one. An exception of an action leaves the function, and the action stays.
    void makeUndo(cUndoInfoBase *info); // RUNS USER CODE

    bool fIsUndo(cUndoInfoBase *info); // whether any action matches this info. RUNS USER CODE
    // The newest action that matches, borrowed from the list, or null.   RUNS USER CODE
    cUndo *find(cUndoInfoBase *info);
    // Removes and deletes the action. No effect for null and for an action that is not in this
    // list, which is never dereferenced.   RUNS USER CODE
    void remove(cUndo *action);

    // Empty, or the first violated rule, as "U2 listed twice"; see cundo.cpp.
    std::string broken_rule() const;

  private:
    using cHolder = std::shared_ptr<cUndo>;
    using cEntries = std::list<cHolder>;
    class cLife;
    class cWalk;
    friend struct cUndoProbe;

    std::int64_t costs();
    bool make_room();
    void insert(cUndo *action);
    cEntries take_out(cUndo const *action);
    cEntries take_all() noexcept;
    cEntries::const_iterator place_of(cUndo const *action) const noexcept;
    bool holds(cUndo const *action) const noexcept { return place_of(action) != entries_.end(); }
    void check() const;

    bool active_ = true;
    bool isundo_;
    cEntries entries_;        // the newest first
    std::size_t removed_ = 0; // the number of all removals: a walk searches again when it changes
    std::shared_ptr<cUndoGlobalList const *> life_; // created on demand, see cLife
};

// Process-wide lists. Their actions are destroyed while the core and the message output still
// exist.
extern QRV_API cUndoGlobalList undoGlobalList;
extern QRV_API cUndoGlobalList redoGlobalList;
