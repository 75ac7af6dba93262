#pragma once
// Exact text inside the writer: whether it is on, the values that it cannot write, and the tables
// for one outermost write.
//
// It is on while a cat::ExactText exists; but a cTextForm, for the paths that reader and writer
// compare, forces one form or the other.
//
// A value is rejected before any of it is written. If it can fail only while being written (a
// user's `write`), it is first written to a string; on failure the values that it entered as
// written are forgotten, so that no back reference leads to them.

#include "qrv/core/cobj.h"
#include "qrv/text/write/cexacttext.h"

#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

// The written form from here on, independent of guards; silent, so that creating a path reports
// nothing.
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
    static constinit signed char forced_; // or 0, 1: the form that a cTextForm requests

    signed char before_;
};

// The text of a key in a path, in the plain or in the exact form, independent of guards.
std::string path_text(objref const &key, bool exact);

// Whether exact text is to be written now.
inline bool exact_text() noexcept {
    return cTextForm::forced_ < 0 ? cTextForm::guards_ > 0 : cTextForm::forced_ > 0;
}

// Whether the written object would read as the same object. Checks only the object itself, not its
// contents. lone: only a node owns it, so it isn't a constant.
bool exact_writable(cObj const &obj, bool lone = false);
// The same for a key. A path finds only keys that satisfy exact_path_key().
bool exact_key(objref const &key, bool lone = false);
// The same for declarations: the type of a specification has a name, and an attribute set reads as
// the same object with its type as currently declared. RUNS USER CODE
bool exact_declared(cObj const &obj);
// Whether an attribute set cannot be read without this attribute.
bool exact_needs(cObj const &holder, objref const &key);
bool exact_path_key(objref const &key);
// Whether the string has only white space and complete comments.
bool exact_comment(std::string const &text);

// Counts and raises "Value cannot be written, path : " and the path. Throws the exceptions of
// handlers.
void report_unwritable(std::string const &path);
void report_unwritable(); // under the current path
// The same without the count, when the stack is exhausted; also outside exact text.
void report_too_deep();

// Objects by identity: an address may be reused, an id is not.
class cObjTable {
  public:
    bool has(cObj const *obj) const {
        auto const found = ids_.find(obj);
        return found != ids_.end() && found->second == obj->obid();
    }
    void insert(cObj const *obj) { insert(obj, obj->obid()); }
    void insert(cObj const *obj, unsigned int id) { ids_[obj] = id; } // may be destroyed already
    void erase(cObj const *obj) { ids_.erase(obj); }

  private:
    std::unordered_map<cObj const *, unsigned int> ids_;
};

class cLineCollector;

// The tables of one outermost exact write.
struct cExactTables {
    cObjTable open;        // being written: the reader cannot resolve a reference into them
    cObjTable unreachable; // written below a key that a path cannot name
    cObjTable relaid;      // one-line containers that had to be written over many lines
    cObjTable forgotten;   // entered as written, but omitted with an enclosing value
    std::vector<std::pair<cObj const *, unsigned int>> entered; // as written, in order, with ids
    int blind_keys = 0;                  // keys on the current path that a path cannot name
    cLineCollector *collector = nullptr; // the innermost one

    void enter(cObj const *obj);
    void forget_after(size_t count);
};

// Creates the tables in the outermost cExactRun, and destroys them at its end.
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
