#pragma once
// The report of a write to the callbacks of the container that it changes. cObj::changed() has no
// argument, so callbacks find the report with change_report::of() while it fires.
//
//     change_report report(owner, key, written::replaced);
//     ... write; return or throw if that fails ...
//     report.fire();
//
// If there is no callback, a report costs one test of a pointer. It reads the stored entry
// directly, without the rules of declared types.

#include "qrv/core/cobj.h"

#include <string>
#include <string_view>

namespace qrv::detail {

enum class written : unsigned char { replaced, inserted, erased };

class change_report {
  public:
    // For an operation that changes several entries, or the value as a whole.
    explicit change_report(objref const &owner) {
        if (owner->has_ommap()) [[unlikely]]
            watch(owner);
    }
    // An inserted entry has no old value, since the value that was at its key has moved.
    change_report(objref const &owner, std::string_view key, written how) : change_report(owner) {
        if (owner_) [[unlikely]]
            note(own_key(std::string(key)), how);
    }
    change_report(objref const &owner, int key, written how) : change_report(owner) {
        if (owner_) [[unlikely]]
            note(own_key(key), how);
    }
    change_report(change_report const &) = delete;
    change_report &operator=(change_report const &) = delete;
    ~change_report() = default;

    // Call it after the write and outside of every guarded(). RUNS USER CODE, whose exceptions
    // reach the caller.
    void fire() {
        if (owner_) [[unlikely]]
            fire_changed();
    }

    objref const &key() const noexcept { return key_; }       // null: not known, or several
    objref const &old_value() const noexcept { return old_; } // null: the key was absent
    objref const &new_value() const noexcept { return new_; } // null: the key is absent

    // The report that is being fired for this object. Null if a program has fired its `changed`
    // itself.
    static change_report const *of(cObj const &owner) noexcept;

  private:
    void watch(objref const &owner);
    void note(objref const &key, written how);
    objref present() const;
    void fire_changed();

    objref owner_; // null if there is no callback
    objref key_;
    objref old_;
    objref new_;
    written how_ = written::replaced;
};

// Sets the report that change_report::of() finds until the end of the scope. While a callback runs
// it is null, since changes that the callback makes have separate reports.
class fired_report {
  public:
    explicit fired_report(change_report const *report) noexcept;
    fired_report(fired_report const &) = delete;
    fired_report &operator=(fired_report const &) = delete;
    ~fired_report();

  private:
    change_report const *outer_;
};

} // namespace qrv::detail
