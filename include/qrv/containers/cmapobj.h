#pragma once
// cMapObj, an attribute hash as an object: the value of type "map", and the base of vectors, sets,
// attribute sets and all container types that a program defines. The behaviour of a map is in the
// functions of cTomMap, the standard methods of the type.
//
// A value that is inserted is shared. assign copies into the values of existing keys and shares new
// values; only detach creates private copies. Nothing here reports that the container has changed:
// that is up to the caller (cObj::changed or a scoped modifier).
//
// A map that contains itself is never freed: break such a cycle with clear(). Comparing, copying
// and walking such maps ends nevertheless, and shared parts cost no more than their size. If the
// stack is too small for another level, an operation fails with an error:
//   0x40000001 "Nesting is too deep in object type: " and the type's name

#include "qrv/core/cattrhash.h"
#include "qrv/core/cobj.h"

class QRV_API cMapObj : public cObj {
  public:
    cMapObj(); // type "map"; does not run `create`
    // Shares the hash, or creates one for null. If the hash has no father, this map becomes its
    // father.
    explicit cMapObj(hashref hash);
    cMapObj(cMapObj const &other);        // runs `create`, then assigns; copies all flags
    explicit cMapObj(cObj const &other);  // the same without `create`
    cMapObj(cTypeObj *type, bool create); // type as in set_type(); true: runs `create`
    ~cMapObj() override;                  // a shared hash remains, without this father

    cMapObj &operator=(cMapObj const &other); // assign. RUNS USER CODE
    cMapObj &operator=(cObj const &other);

    // If not null, setattr accepts only values of exactly this type. assign does not copy it.
    // Existing values are not checked. Borrows the type, or shares it if it counts its objects.
    cTypeObj *entrytype() const noexcept {
        return reinterpret_cast<cTypeObj *>(entrytype_ & ~holds_entrytype);
    }
    void set_entrytype(cTypeObj *type) noexcept;

    int size() const noexcept;
    void clear(); // RUNS USER CODE. A shared hash becomes empty for all its owners
    // The hash, never null. It does not know specifications and flags: changes made through it are
    // not checked.
    cAttrHash &datamap() noexcept { return *hash_; }
    cAttrHash const &datamap() const noexcept { return *hash_; }
    hashref const &datamap_ref() const noexcept { return hash_; }

    // The stored reference itself, for as long as the node exists. For a key that does not exist,
    // inserts cat::nil(). For a nil key: a scratch reference, which each such call resets.
    // RUNS USER CODE
    objref &valref_(objref const &key);
    objref &valref_(std::string const &key);

    // The first value in ring order that equals `value` (findvalue), or that is the same object
    // (findvalref); else badfind. RUNS USER CODE: findvalue calls methods   O(size)
    [[nodiscard]] objref findvalue(cObj const &value);
    [[nodiscard]] objref findvalref(cObj const *value);
    [[nodiscard]] objref findvalref(objref const &value);

    // The value of exactly type "map" under key; a value of another type is replaced by a new map,
    // without regard to specifications and const keys. For a nil key, submap returns an empty
    // scratch map, the same one at each call, and submap_ptr returns null. The result is borrowed
    // from the node. RUNS USER CODE
    cMapObj &submap(objref const &key);
    cMapObj &submap(std::string const &key);
    cMapObj *submap_ptr(objref const &key);
    cMapObj *submap_ptr(std::string const &key);

    // Removes each value that is an empty map; with `recursive` also inside the other maps.
    // Considers only values of exactly type "map". A map that becomes empty in this way may stay:
    // another call removes it. RUNS USER CODE
    void remove_emptychilds(bool recursive);

    // Replaces all values by private copies; with `deep` also inside maps, sets and vectors, where
    // a part with several owners is copied once. False if a value could not be copied.
    // RUNS USER CODE
    bool detach(bool deep);

    // The same size, and an equal value for each key; order does not matter.
    // RUNS USER CODE   O(size)
    bool equal_unsorted(cObj const &other) const;

    // Inserts each piece of the string that is not yet a key, with a nil value. No effect on
    // vectors.
    void append_keys(std::string const &text, char delimiter);

    // The specification of a key (containers/cattspec.cpp); nilspec if it has none. Setting one
    // shares it and sets the attribute to nil. RUNS USER CODE: key hooks
    [[nodiscard]] cRef<cAttspec, cRefTraits<cAttspec>> attspec(objref const &key);
    [[nodiscard]] cRef<cAttspec, cRefTraits<cAttspec>> attspec(std::string const &key);
    void set_attspec(objref const &key, cRef<cAttspec, cRefTraits<cAttspec>> const &spec);
    void set_attspec(std::string const &key, cRef<cAttspec, cRefTraits<cAttspec>> const &spec);

  private:
    static constexpr std::uintptr_t holds_entrytype = 1;

    hashref hash_;
    std::uintptr_t entrytype_ = 0; // the address, and in bit 0 whether the map shares the type
};

namespace cat {
// Copy on write: makes `ref` the only owner of its value; with `deep` does the same for the values
// inside. False for a null or void value, for one that cannot be cloned, and for the library's
// constants. RUNS USER CODE
QRV_API bool detach(objref const &ref, bool deep);
} // namespace cat

// The standard methods of type "map". For objects that are not a cMapObj they return false or
// cat::bad(), unless stated otherwise. Each RUNS USER CODE.
namespace cTomMap {
//   0x40020000 "Setattr in object type '...', key '...': " and the reason
//   0x40040000 "FIXED REF attribute, ...", "FIXED TYPE attribute, ...", "REQUIRED attribute, ..."
QRV_API bool setattr(cObj &obj, objref &key, objref &value);
QRV_API objref getattr(objref obj, objref key); // 0x40040000 "REQUIRED attribute, ..."
// Inserts a new map unless there is a good value.
QRV_API objref getattr_insert(objref obj, objref key);
QRV_API objref iterobj(objref obj);
QRV_API bool m_assign(cObj &obj, objref &arg);
QRV_API bool m_add(cObj &obj, objref &arg); // adds the missing keys; always true
// Appends at after_last_index(), without checks. Always true.
QRV_API bool m_append(cObj &obj, objref &arg);
// False if the sizes differ. If they begin to differ during the comparison, because the `equal` of
// a value changes a map, it also prints both maps to std::cout.
QRV_API bool equal_sorted(cObj &obj, objref &arg);
// By key, in any order. Prints nothing.
QRV_API bool equal_unsorted(cObj &obj, objref &arg);
// Write and read text; `stream` is a holder of the stream (cOutHolder, cInHolder).
QRV_API bool m_write(cObj &obj, objref &stream);  // with braces
QRV_API bool m_write0(cObj &obj, objref &stream); // without braces
QRV_API bool m_read(cObj &obj, objref &stream);
} // namespace cTomMap

// For types of other modules whose text consists of their objects' own members.
namespace cTomOmmap {
QRV_API bool m_write(cObj &obj, objref &stream);
QRV_API bool m_read(cObj &obj, objref &stream);
} // namespace cTomOmmap
