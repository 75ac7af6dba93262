#pragma once
// cAttr, the result of obj[key]: a handle for the attribute with that key in that owner, whether
// the attribute exists or not. It reads with the owner's getattr and writes with its setattr, so
// all rules of the owner's type apply. A handle is a value, not a cObj, and is not tied to a node.
//
// Every read calls the owner again. It stores the result in `cache_`, so that the object exists
// while the result of `*` or `->` is used. An unusable handle (owner null or void) reads cat::bad()
// and ignores writes.

#include "qrv/core/cobj.h"

#include <iosfwd>

class QRV_API cAttr {
  public:
    cAttr() noexcept = default;
    cAttr(objref const &owner, objref const &key) noexcept; // shares both
    cAttr(objref const &owner, std::string const &key);     // clones the string
    cAttr(objref const &owner, char const *key);            // a null string is a null key
    cAttr(objref const &owner, int key);
    cAttr(cAttr const &other) noexcept; // owner and key; the cache starts null
    ~cAttr();

    // Null if the handle has none.
    objref const &key() const noexcept { return key_; }
    objref const &owner() const noexcept { return owner_; }
    std::string key_as_string() const;
    bool is_defined() const noexcept { return owner_ && key_; } // the attribute may not exist

    // These read. RUNS USER CODE: getattr of the owner's type. With a null key they return
    // cat::bad(). `*` and `->` also return cat::bad() for a null value; the result is valid until
    // the next read or write.
    [[nodiscard]] objref getattr() const;
    [[nodiscard]] objref getattr(cTypeObj const &type) const; // bad unless exactly of this type
    operator objref() const { return getattr(); }
    cObj &operator*() const;
    cObj *operator->() const;

    // Reads the attribute, and returns a handle for `key` in it.
    cAttr operator[](objref const &key) const;
    cAttr operator[](std::string const &key) const;
    cAttr operator[](char const *key) const;
    cAttr operator[](int key) const;
    // std::out_of_range if the value does not fit in an int.
    template <cOtherIndex T> cAttr operator[](T key) const { return (*this)[cat::as_int(key)]; }
    template <cCharacter T> cAttr operator[](T) const = delete;
    cAttr operator[](double) const = delete;
    cAttr operator[](bool) const = delete;

    // RUNS USER CODE: the key's hook
    bool operator==(cAttr const &other) const; // same owner, equal keys
    bool operator!=(cAttr const &other) const { return !(*this == other); }

    void set(cAttr const &other); // rebinds the handle; writes nothing

    // Writes: shares the value; a kill value removes the attribute. If the owner refuses the value,
    // that is only reported as an error.   RUNS USER CODE
    cAttr &operator=(objref const &value);
    cAttr &operator=(cAttr const &other);

    // Inserts at this position of a vector or set. Checks neither flags nor the entry type, and in
    // a set not whether it has an equal value. Returns the handle of the next position; after an
    // error, or for a null owner, a copy of this one.
    //   0x40020000 "Setattr in object type '...', key '...': Inserting cAttr::operator<< ..."
    cAttr operator<<(objref const &value);

    objref swap_to(objref const &value); // writes; returns the old value
    // Return the value if it has that type, or the type of `value`. Otherwise replace it first: by
    // type.newobj(), or by `value`, which is shared. cat::bad() if the owner refuses the new value,
    // for "niltype", and for a bad `value`.
    objref force_type(cTypeObj const &type);
    objref force_default(objref const &value);
    // Assigns to the present value if it has the same type; otherwise stores `value`, or a clone of
    // it.
    void force_value(objref const &value, bool clone);

    // Stores a clone of the value in `map`, under a clone of the key; nothing if there is no clone.
    void save(cMapObj &map) const;
    cAttr &unsave(cMapObj const &map); // assigns the saved value, if any, to the present one
    // Writes `key=value; `. True if the stream is good afterwards.
    bool write_attr(std::ostream &os) const;

  private:
    // Private, so that callers can pass only a cRef.
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

// std::out_of_range if the value does not fit in an int.
template <cOtherIndex T> cAttr cObj::operator[](T key) { return (*this)[cat::as_int(key)]; }
