#pragma once
// Attribute specifications: for one key, whether the attribute is required or may be nil, has a
// default, keeps its type or its object. The rules themselves stand in cTomMap::setattr and
// getattr. A map keeps a key's attribute specification in its own member map under that key, and
// the OR of all their flags in its five low flag bits, so that a map without any pays nothing.
//
// States of the flags word, restored by force_flags() after each change:
//   with a default      4, perhaps 2; neither 8 nor 16
//   without a default   exactly one of 8 and 16; neither 4 nor 2
//   always              1 exactly when there is a type

#include "qrv/core/cobj.h"

enum cAttspecFlag : int {
    asf_fixtype = 1,  // only values of the type
    asf_fixref = 2,   // the object can't be replaced once there is one: #FIXED
    asf_default = 4,  // there is a default
    asf_required = 8, // there must be a value: #REQUIRED
    asf_implied = 16, // may be nil: #IMPLIED
    asf_all = 31
};

class QRV_API cAttspec : public cObj {
  public:
    using specref = cRef<cAttspec, cRefTraits<cAttspec>>;

    cAttspec(int flags, cTypeObj *type);              // borrows the type; null: any
    cAttspec(objref const &default_value, int flags); // shares; of the flags only 1 and 2 count
    cAttspec(cAttspec const &) = delete;
    ~cAttspec() override;
    cAttspec &operator=(cAttspec const &other); // assign, then default and type
    using cObj::operator=;

    bool is_fixtype() const noexcept { return flags_of(asf_fixtype) != 0; }
    bool is_fixref() const noexcept { return flags_of(asf_fixref) != 0; }
    bool is_default() const noexcept { return flags_of(asf_default) != 0; }
    bool is_required() const noexcept { return flags_of(asf_required) != 0; }
    bool is_implied() const noexcept { return flags_of(asf_implied) != 0; }
    objref get_default() const { return default_; } // shared; null if none
    cTypeObj *get_type() const noexcept { return type_; }
    void set_flags(int flags);
    // A kill value clears the default, a void one changes nothing. Shares the value.
    void set_default(objref const &value, bool fix_type);
    // The fixed type, borrowed unless it counts its objects; other flags stay.
    void set_type(cTypeObj *type);
    // The same for a type that comes as a value, which may be all that keeps it: shares it unless
    // the registry does under its name. So a type that names itself in its declaration is no cycle.
    void share_type(typeref const &type);
    typeref const &held_type() const noexcept { return held_type_; } // null: none, or borrowed
    static bool is_registered(cTypeObj const &type);                 // under its name
    // The one specification of keys that have none: never stands in a map.
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
QRV_API objref newobj(objref type); // a required one without type
QRV_API bool create(cObj &obj);     // fetches #REQUIRED, #IMPLIED and #FIXED, once
// 0x40020000 "Setattr in object type 'attspec', key '...': " and one of
//   " Error in setting attribute type: " and the value's type; " Error in setting BAD attribute";
//   " Error in setting BAD type: " and the value
QRV_API bool setattr(cObj &obj, objref &key, objref &value);
QRV_API objref getattr(objref obj, objref key); // nil for what isn't set; bad for other keys
// What does not come back: without cat::ExactText, an implied one reads back as required, one that
// is an empty text not at all, and a number as default runs into what follows.
QRV_API bool m_write(cObj &obj, objref &stream);
QRV_API bool m_read(cObj &obj, objref &stream); // 0x40000000 "Wrong type-entry in attspec"
} // namespace cTomAttspec
