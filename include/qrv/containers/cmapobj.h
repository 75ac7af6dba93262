#pragma once
// cMapObj, an attribute hash as an object: the value of type "map", and the base of vectors, sets,
// attribute sets and of every container type that a program makes. What users see of a map stands
// in the functions of cTomMap, which are the standard methods of the type.
//
// Sharing: a value that is put in is shared with the caller. assign copies in place over keys that
// are present and shares new ones; only detach makes private copies. Nothing here says that the
// container has changed; that is up to the caller (cObj::changed or a scoped modifier).
//
// A map that holds itself is never freed: break such a cycle with clear(). Comparing, copying and
// walking such maps ends all the same, and costs no more than their size on shared parts. Where
// the stack doesn't allow another level, an operation fails softly:
//   0x40000001 "Nesting is too deep in object type: " and the type's name

#include "qrv/core/cattrhash.h"
#include "qrv/core/cobj.h"

class QRV_API cMapObj : public cObj {
  public:
    cMapObj();                           // type "map"; create isn't run
    explicit cMapObj(hashref hash);      // shares it, a new one for null; its father if it has none
    cMapObj(cMapObj const &other);       // create runs; then assign, and the whole flags word
    explicit cMapObj(cObj const &other); // the same without create
    cMapObj(cTypeObj *type, bool create); // borrows the type; create unless it is "niltype"
    ~cMapObj() override;                  // the hash may live on, and then has a dangling father

    cMapObj &operator=(cMapObj const &other); // assign
    cMapObj &operator=(cObj const &other);

    // When not null, the only type that setattr accepts for values. Not copied by assign. Borrows
    // the type unless that counts its objects; no check.
    cTypeObj *entrytype() const noexcept {
        return reinterpret_cast<cTypeObj *>(entrytype_ & ~holds_entrytype);
    }
    void set_entrytype(cTypeObj *type) noexcept;

    int size() const noexcept;
    void clear(); // RUNS USER CODE; empties a shared hash for all who share it
    cAttrHash &datamap() noexcept { return *hash_; }
    cAttrHash const &datamap() const noexcept { return *hash_; }
    hashref const &datamap_ref() const noexcept { return hash_; }

    // The stored reference itself; an absent key is made with cat::nil(). For a nil key the
    // reference is a scratch one that is reset at each such call. Valid while the node lives.
    objref &valref_(objref const &key);
    objref &valref_(std::string const &key);

    // First in ring order, else badfind: a value that equals, and one that is this very object.
    [[nodiscard]] objref findvalue(cObj const &value);
    [[nodiscard]] objref findvalref(cObj const *value);
    [[nodiscard]] objref findvalref(objref const &value);

    // The value of exactly type "map" under key; whatever else stood there is replaced by a new
    // map, past specifications and const keys. For a nil key the reference is a scratch map,
    // emptied at each such call, and the pointer null. Borrowed: dies with its node.
    cMapObj &submap(objref const &key);
    cMapObj &submap(std::string const &key);
    cMapObj *submap_ptr(objref const &key);
    cMapObj *submap_ptr(std::string const &key);

    // Removes empty maps among the values; recursive: below them first. One pass doesn't look
    // back, so a child emptied on the way may need a second call. Only values of exactly "map".
    void remove_emptychilds(bool recursive);

    // Gives this map its own copies of everything it holds; deep: below maps, sets and vectors
    // too, where a part that is held several times is copied once. False if any value refused.
    bool detach(bool deep);

    // Same size, and for each key an equal value; order doesn't matter.   O(size)
    bool equal_unsorted(cObj const &other) const;

    // For each piece of text that is no key yet: the key with a nil value. Nothing on vectors.
    void append_keys(std::string const &text, char delimiter);

    // Specifications: containers/cattspec.cpp. nilspec for a key without one; setting one wipes
    // the attribute to nil.
    [[nodiscard]] cRef<cAttspec, cRefTraits<cAttspec>> attspec(objref const &key);
    [[nodiscard]] cRef<cAttspec, cRefTraits<cAttspec>> attspec(std::string const &key);
    void set_attspec(objref const &key, cRef<cAttspec, cRefTraits<cAttspec>> const &spec);
    void set_attspec(std::string const &key, cRef<cAttspec, cRefTraits<cAttspec>> const &spec);

  private:
    static constexpr std::uintptr_t holds_entrytype = 1;

    hashref hash_;
    std::uintptr_t entrytype_ = 0; // the address, and whether the map is one of its owners
};

namespace cat {
// Copy on write: afterwards `ref` is the only owner of its value, deep: the values below it are
// private too. False for a null or void value, for one that can't be cloned, and for the library's
// own constants. RUNS USER CODE
QRV_API bool detach(objref const &ref, bool deep);
} // namespace cat

// The standard methods of type "map". Objects that are no cMapObj answer false or cat::bad().
namespace cTomMap {
//   0x40020000 "Setattr in object type '...', key '...': " and the reason
//   0x40040000 "FIXED REF attribute, ...", "FIXED TYPE attribute, ...", "REQUIRED attribute, ..."
QRV_API bool setattr(cObj &obj, objref &key, objref &value);
QRV_API objref getattr(objref obj, objref key);        // 0x40040000 "REQUIRED attribute, ..."
QRV_API objref getattr_insert(objref obj, objref key); // a new map unless there is a good value
QRV_API objref iterobj(objref obj);
QRV_API bool m_assign(cObj &obj, objref &arg);
QRV_API bool m_add(cObj &obj, objref &arg);    // adds the keys that obj lacks; true
QRV_API bool m_append(cObj &obj, objref &arg); // at after_last_index(), without any test; true
QRV_API bool equal_sorted(cObj &obj, objref &arg);
QRV_API bool equal_unsorted(cObj &obj, objref &arg);
// With text: the stream comes in a holder (cOutHolder, cInHolder).
QRV_API bool m_write(cObj &obj, objref &stream);  // {...}
QRV_API bool m_write0(cObj &obj, objref &stream); // without braces
QRV_API bool m_read(cObj &obj, objref &stream);
} // namespace cTomMap

// For types of other modules whose written form is that of their objects' own members.
namespace cTomOmmap {
QRV_API bool m_write(cObj &obj, objref &stream);
QRV_API bool m_read(cObj &obj, objref &stream);
} // namespace cTomOmmap
