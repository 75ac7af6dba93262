#pragma once
// cAttr, what obj[key] gives: a handle that stands for the attribute with that key in that owner,
// whether it exists or not. Reading goes through the owner's getattr, writing through its setattr,
// so all rules of the owner's type apply. A handle is a value, no cObj, and is tied to no node.
//
// Every read asks the owner again and keeps what it found in `cache`, which is what makes `*` and
// `->` safe to use. An unusable handle (owner null or void) reads cat::bad() and ignores writes.

#include "qrv/core/cobj.h"

#include <iosfwd>

class QRV_API cAttr {
  public:
    cAttr() noexcept = default;
    cAttr(objref const &owner, objref const &key) noexcept; // shares both
    cAttr(objref const &owner, std::string const &key);     // clones the text
    cAttr(objref const &owner, char const *key);            // a null text makes a null key
    cAttr(objref const &owner, int key);
    cAttr(cAttr const &other) noexcept; // owner and key; the cache starts null
    ~cAttr();

    objref const &key() const noexcept { return key_; }
    objref const &owner() const noexcept { return owner_; }
    std::string key_as_string() const;
    bool is_defined() const noexcept { return owner_ && key_; } // not: the attribute exists

    [[nodiscard]] objref getattr() const;
    [[nodiscard]] objref getattr(cTypeObj const &type) const; // bad unless of exactly this type
    operator objref() const { return getattr(); }
    cObj &operator*() const;
    cObj *operator->() const;

    cAttr operator[](objref const &key) const;
    cAttr operator[](std::string const &key) const;
    cAttr operator[](char const *key) const;
    cAttr operator[](int key) const;
    // std::out_of_range for what an int can't hold.
    template <cOtherIndex T> cAttr operator[](T key) const { return (*this)[cat::as_int(key)]; }
    template <cCharacter T> cAttr operator[](T) const = delete;
    cAttr operator[](double) const = delete;
    cAttr operator[](bool) const = delete;

    bool operator==(cAttr const &other) const; // same owner, equal keys
    bool operator!=(cAttr const &other) const { return !(*this == other); }

    void set(cAttr const &other); // rebinds the handle; writes nothing

    // Writes, sharing the value; a kill value removes. Refusal shows on the error route only.
    cAttr &operator=(objref const &value);
    cAttr &operator=(cAttr const &other);

    // Inserts into a vector or set at this place, past flags, entry type and a set's test for
    // equal values; gives the handle of the next place, or a copy of this one after an error.
    //   0x40020000 "Setattr in object type '...', key '...': Inserting cAttr::operator<< ..."
    cAttr operator<<(objref const &value);

    objref swap_to(objref const &value);               // writes, gives what stood there
    objref force_type(cTypeObj const &type);           // makes one if needed; bad if refused
    objref force_default(objref const &value);         // stores value unless its type is there
    void force_value(objref const &value, bool clone); // assigns in place, or stores

    void save(cMapObj &map) const;     // a private clone of the value, under a clone of the key
    cAttr &unsave(cMapObj const &map); // assigns the saved content to the present object
    bool write_attr(std::ostream &os) const; // key=value; and a blank; true if os is still good

  private:
    // Only a cRef can be given to these operations.
    cAttr &operator=(cObj const &) { return *this; }
    void force_value(cObj const &) {}
    void force_value(cObj const &, bool) {}
    objref force_default(cObj const &) { return nullptr; }

    bool usable() const noexcept { return !cObj::is_void(owner_); }
    void put(objref const &value);
    cAttr insert_error(std::string const &text) const;

    // Destroyed in the order cache, key, owner.
    objref owner_;
    objref key_;
    mutable objref cache_;
};

template <cOtherIndex T> cAttr cObj::operator[](T key) { return (*this)[cat::as_int(key)]; }
