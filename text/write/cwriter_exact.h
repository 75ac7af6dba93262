#pragma once
// Exact text inside the writer: is it on, what can it not write, and the tables that it needs for
// one outermost write.
//
// It is on while a cat::ExactText lives, but a cTextForm, for the paths that reader and writer
// compare, forces one form or the other.
//
// A value is refused before anything of it is written. What can only fail while it is written (a
// foreign `write`) is caught in a text first, and on failure what it has entered as written is
// forgotten, so that no back reference leads to it.

#include "qrv/core/cobj.h"
#include "qrv/text/write/cexacttext.h"

#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

// The written form from here on, whatever guards live; silent, so that making a path tells nothing.
class cTextForm {
  public:
    explicit cTextForm(bool exact) noexcept;
    cTextForm(cTextForm const &) = delete;
    cTextForm &operator=(cTextForm const &) = delete;
    ~cTextForm();

  private:
    friend bool exact_text() noexcept;
    friend class cat::ExactText;
    friend void report_unwritable(std::string const &path);

    static constexpr signed char by_guards = -1;
    static constinit unsigned int guards_;
    static constinit signed char forced_; // or 0, 1: the form that a cTextForm asks for

    signed char before_;
};

// The text of a key in a path, in the plain or in the exact form, whatever guards live.
std::string path_text(objref const &key, bool exact);

// Is exact text to be written now?
inline bool exact_text() noexcept {
    return cTextForm::forced_ < 0 ? cTextForm::guards_ > 0 : cTextForm::forced_ > 0;
}

// Can this object be written so that it reads back? Looks at the object alone, not below it. lone:
// only a node owns it, so it isn't a constant.
bool exact_writable(cObj const &obj, bool lone = false);
// The same for a key. In a path only those of the second kind are found again.
bool exact_key(objref const &key, bool lone = false);
// The same for what declarations add: the type of a specification has a name, and an attribute set
// is one that its type, as it is declared now, reads as the same object. RUNS USER CODE
bool exact_declared(cObj const &obj);
// Can an attribute set without this attribute not be read?
bool exact_needs(cObj const &holder, objref const &key);
bool exact_path_key(objref const &key);
// Nothing but white space and whole comments.
bool exact_comment(std::string const &text);

// Counts and raises "Value cannot be written, path : " and the path. Throws what handlers throw.
void report_unwritable(std::string const &path);
void report_unwritable(); // under the current path
// The same without the count, when the stack ends; also outside of exact text.
void report_too_deep();

// An object by identity: an address is reused, an id isn't.
class cObjTable {
  public:
    bool has(cObj const *obj) const {
        auto const found = ids_.find(obj);
        return found != ids_.end() && found->second == obj->obid();
    }
    void insert(cObj const *obj) { insert(obj, obj->obid()); }
    void insert(cObj const *obj, unsigned int id) { ids_[obj] = id; } // may be dead already
    void erase(cObj const *obj) { ids_.erase(obj); }

  private:
    std::unordered_map<cObj const *, unsigned int> ids_;
};

class cLineCollector;

// What one outermost exact write remembers.
struct cExactTables {
    cObjTable open;        // being written: a reference into them can't be read
    cObjTable unreachable; // written below a key that no path can name
    cObjTable relaid;      // one-line containers that had to be written over many lines
    cObjTable forgotten;   // entered as written, but left out with what they stood in
    std::vector<std::pair<cObj const *, unsigned int>> entered; // as written, in order, with ids
    int blind_keys = 0;                  // keys on the current path that no path can name
    cLineCollector *collector = nullptr; // the innermost one

    void enter(cObj const *obj);
    void forget_behind(size_t count);
};

// The tables: made by the outermost cExactRun, which also takes them away.
class cExactRun {
  public:
    cExactRun();
    cExactRun(cExactRun const &) = delete;
    cExactRun &operator=(cExactRun const &) = delete;
    ~cExactRun();

    static cExactTables *tables() noexcept; // null outside

  private:
    bool outermost_;
};
