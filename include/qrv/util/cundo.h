#pragma once
// Undoable actions. A program derives its actions from cUndo, tells which one it means by a class
// derived from cUndoInfoBase, and keeps the actions in two lists, undoGlobalList and
// redoGlobalList. The lists know nothing of what an action does: they keep the newest in front,
// drop the oldest when all together cost too much, and find the one that answers to an info.
//
// Who owns an action: the lists that it stands in. Copies of a list share its actions, and so does
// an action that is added to a second list. Whatever takes it out of the last one deletes it:
// remove(), makeUndo(), setActive(false), add() that needs room, an assignment, the list's end.
//
// Every function of an action is FOREIGN CODE and may do with any list what it likes, destroy it
// too; it may call the same function again, or throw. A walk calls the actions that stood in the
// list when it began; one that was taken out meanwhile isn't called any more, and the one that is
// running is deleted only when its function has come back. Actions are deleted when they stand in
// the list no more, so their destructors see a list in order.
//
// Limits: an action is made by new, and deleted by nobody but the lists once one has taken it. When
// the process ends redoGlobalList goes first, then undoGlobalList, both before the core and the
// message route; an action of undoGlobalList must not look at redoGlobalList in its destructor.

#include "qrv/ccomp.h"

#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <string>

class QRV_API cUndoGlobalList;

// What identifies actions; derived classes carry it. The lists hand it on, null too.
class QRV_API cUndoInfoBase {
  public:
    cUndoInfoBase() = default;
    cUndoInfoBase(cUndoInfoBase const &) {}
    cUndoInfoBase &operator=(cUndoInfoBase const &) { return *this; }
    virtual ~cUndoInfoBase();
};

// One action. Copies of it stand in no list.
class QRV_API cUndo {
  public:
    virtual bool undo(cUndoInfoBase *info) = 0;  // true: done, and the list lets the action go
    virtual bool isfor(cUndoInfoBase *info) = 0; // does the action belong to this info?
    virtual void spare1() = 0;                   // never called by the library
    virtual int cost() = 0;                      // in the program's unit, say bytes; may change
    virtual void spare2() = 0;                   // never called by the library
    virtual ~cUndo();

  protected:
    cUndo() = default;
    cUndo(cUndo const &) {}
    cUndo &operator=(cUndo const &) { return *this; }

  private:
    friend class cUndoGlobalList;
    friend struct cUndoProbe;

    std::weak_ptr<cUndo> holder_; // what all lists share
    bool taken_ = false;          // by a list; if holder_ is empty then, the destructor is running
};

class QRV_API cUndoGlobalList {
  public:
    // All of a list may cost less than this before the next action is added: 32 MiB, if costs are
    // bytes. What is added is taken whatever it costs, so that the last step can always be undone.
    static constexpr std::int64_t cost_limit = 0x2000000;

    explicit cUndoGlobalList(bool isundo);
    // The copy shares the actions. There is no moving: it copies.
    cUndoGlobalList(cUndoGlobalList const &other);
    // Becomes a copy of `other`. An action that stood here is let go, and deleted if it stands in
    // no other list: nobody else could do it. RUNS FOREIGN CODE when all is copied.
    cUndoGlobalList &operator=(cUndoGlobalList const &other);
    ~cUndoGlobalList(); // from the front. RUNS FOREIGN CODE

    bool fActive() const noexcept { return active_; }
    bool fIsUndo() const noexcept { return isundo_; } // the list's kind, as constructed

    // A list that isn't active takes no actions, and lets go at once those it has, from the front.
    // False and then true clears a list.   RUNS FOREIGN CODE
    void setActive(bool active);

    // Adopts the action and puts it in front. First the oldest are let go, one by one, until all
    // together cost less than the limit; all are asked for their cost each time, the new one isn't.
    // True too, and nothing changes, for an action that stands here already: it does so once.
    // False when the list isn't active (or was shut meanwhile), for null and for an action that is
    // being deleted: the caller keeps it, and does so also when cost() throws.   O(n)
    bool add(cUndo *action); // RUNS FOREIGN CODE

    // Calls undo(info), the newest first, until one returns true; that one is taken out and
    // deleted. What an action throws goes through, and the action stays.
    void makeUndo(cUndoInfoBase *info); // RUNS FOREIGN CODE

    bool fIsUndo(cUndoInfoBase *info); // does any action answer to this info? RUNS FOREIGN CODE
    // The newest that does, borrowed from the list, or null.   RUNS FOREIGN CODE
    cUndo *find(cUndoInfoBase *info);
    // Takes the action out and deletes it. Nothing for null and for one that doesn't stand here,
    // which isn't looked at.   RUNS FOREIGN CODE
    void remove(cUndo *action);

    // Empty, or the first rule that is broken, as "U2 stands twice"; see cundo.cpp.
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
    cEntries entries_;        // the newest in front
    std::size_t removed_ = 0; // how many were ever taken out: walks look again when it changes
    std::shared_ptr<cUndoGlobalList const *> life_; // made when needed; tells operations of its end
};

// Shared by the whole process. Their actions die while the core and the message route still live.
extern QRV_API cUndoGlobalList undoGlobalList;
extern QRV_API cUndoGlobalList redoGlobalList;
