#pragma once
// Attribute specifications: whether the attribute of a key is required or may be nil, has a
// default, and may change its type or its object. cTomMap::setattr and getattr enforce them. A map
// stores the attspec of a key in its own member map under that key, and the OR of all their
// flags in its five lowest flag bits, so that a map without specifications costs nothing.
//
// The possible flags, which force_flags() restores after each change:
//   with a default      4, and possibly 2; neither 8 nor 16
//   without a default   exactly one of 8 and 16; neither 4 nor 2
//   always              1 exactly if there is a type

#include "qrv/core/cobj.h"

enum cAttspecFlag : int {
    asf_fixtype = 1,  // only values of this type
    asf_fixref = 2,   // an existing object cannot be replaced: #FIXED
    asf_default = 4,  // has a default
    asf_required = 8, // needs a value: #REQUIRED
    asf_implied = 16, // may be nil: #IMPLIED
    asf_all = 31
};

class QRV_API cAttspec : public cObj {
  public:
    using specref = cRef<cAttspec, cRefTraits<cAttspec>>;

    cAttspec(int flags, cTypeObj *type);              // type as in set_type()
    cAttspec(objref const &default_value, int flags); // shares; uses only the flags 1 and 2
    cAttspec(cAttspec const &) = delete;
    ~cAttspec() override;
    // Copies default and type, not the flags. First reports an error, since `assign` is missing.
    cAttspec &operator=(cAttspec const &other);
    using cObj::operator=;

    bool is_fixtype() const noexcept { return flags_of(asf_fixtype) != 0; }
    bool is_fixref() const noexcept { return flags_of(asf_fixref) != 0; }
    bool is_default() const noexcept { return flags_of(asf_default) != 0; }
    bool is_required() const noexcept { return flags_of(asf_required) != 0; }
    bool is_implied() const noexcept { return flags_of(asf_implied) != 0; }
    objref get_default() const { return default_; }       // shared; null without a default
    cTypeObj *get_type() const noexcept { return type_; } // borrowed; null: any type
    // Adds these flags, and makes the flags consistent as above. #IMPLIED removes #REQUIRED.
    void set_flags(int flags);
    // A kill value removes the default, other void values have no effect. Shares the value. With
    // fix_type its type becomes the fixed type.
    void set_default(objref const &value, bool fix_type);
    // The fixed type: borrowed, or shared if it counts its objects. Null removes it. Other flags
    // stay.
    void set_type(cTypeObj *type);
    // The same for a type that may have no other owner: shares it, unless it is registered under
    // its name. So a type that names itself in its declaration does not form a cycle.
    void share_type(typeref const &type);
    typeref const &held_type() const noexcept { return held_type_; } // null: none, or borrowed
    static bool is_registered(cTypeObj const &type);                 // under its name
    // The attspec of keys that have none. It is never stored in a map.
    static specref const &nilspec();

  protected:
    void force_flags();

  private:
    struct cNilTag {};
    explicit cAttspec(cNilTag);
    void fix_type_flag();

    objref default_;
    cTypeObj *type_ = nullptr;
    typeref held_type_;
};

using specref = cAttspec::specref;

// The standard methods of the type "attspec". Its attributes are "type", "default" and "flag".
namespace cTomAttspec {
QRV_API objref newobj(objref type); // a required one without a type
QRV_API bool create(cObj &obj); // fetches the constants #REQUIRED, #IMPLIED and #FIXED, once; true
// 0x40020000 "Setattr in object type 'attspec', key '...': " and one of
//   " Error in setting attribute type: " and the value's type; " Error in setting BAD attribute";
//   " Error in setting BAD type: " and the value
QRV_API bool setattr(cObj &obj, objref &key, objref &value);
// Nil if it is not set; badfind for a non-string key, bad for other keys.
QRV_API objref getattr(objref obj, objref key);
// Without cat::ExactText, some attspecs cannot be read again: an implied one with a type is read as
// a required one, an implied one without a type is written as an empty string, which cannot be
// read, and no separator follows a default that is a number.
QRV_API bool m_write(cObj &obj, objref &stream);
QRV_API bool m_read(cObj &obj, objref &stream); // 0x40000000 "Wrong type-entry in attspec"
} // namespace cTomAttspec
