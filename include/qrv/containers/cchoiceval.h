#pragma once
// Choices: enumerations made at run time. A choice type is a type object of the metatype "choice"
// with a type member "choices", which is a map or any other container. A value of it is a cursor
// over that container, and where it stands is the value.
//
//   Position     is_undefined()   how it comes about
//   at a choice  false            a key that the choices have
//   undefined    true             the end position: set_undefined(), an empty text
//   lost         true             null, after update(): the choice is gone, or it was undefined
//
// Changing the choices through the type (its attributes) says so with cObj::changed(), and each
// value that follows its type goes along in update(). Values made by the system (newobj, clone,
// reading) follow; a value made by a constructor follows if told to. Whoever changes the container
// itself calls type.changed(), or else each value finds out at its own next update().
//
// A value keeps its type alive, beyond its registration. A type among whose choices stands one of
// its own values is a cycle and never freed; reading text makes none.

#include "qrv/containers/citerobj.h"
#include "qrv/core/ctypeobj.h"

class QRV_API cChoiceVal : public cIterObj {
  public:
    // At the first choice, undefined if there is none. Shares the type; null is "niltype", a type
    // without choices. RUNS USER CODE, as do all constructors
    explicit cChoiceVal(cTypeObj *type, bool follow = false);
    // A value of the same type that doesn't follow, at the key of other if the type has it still,
    // else undefined.
    cChoiceVal(cChoiceVal const &other);
    // The type by cat::find_type. At the first choice for a null key, undefined for an unknown one.
    cChoiceVal(std::string const &type_name, char const *key);
    ~cChoiceVal() override;

    // The container of the last update(), if it still is the type's; else null. So the result is a
    // sign of a change not yet seen, too.
    objref choices() const;

    // All by assign(): a value or an iterator gives its key, anything else is the key. An unknown
    // one changes nothing.
    cChoiceVal &operator=(cChoiceVal const &other);
    cChoiceVal &operator=(cObj const &other);
    cChoiceVal &operator=(std::string const &key);
    cChoiceVal &operator=(char const *key); // null changes nothing
    cChoiceVal &operator=(int key);

    typeref const &held_type() const noexcept { return held_; } // the type at construction

    void set_undefined() { setpos(-1); }
    bool is_undefined() const { return !valid(); }

    // Other choices: to the choice of the same key, else the first; an undefined value is lost. The
    // same choices: as in cIterObj. False if lost. RUNS USER CODE
    bool update() override;

  private:
    objref type_choices() const; // null without choices
    bool saw(objref const &choices) const;
    void go_to(objref const &choices);

    typeref held_;
    cObj const *seen_ = nullptr; // the choices at the last update: borrowed, never looked into
    unsigned int seen_id_ = 0;
};

// The methods that a choice type gives to its values. Objects that are no cChoiceVal answer false
// or cat::bad().
namespace cTomChoiceVal {
QRV_API objref newobj(objref type);             // follows; bad if type is no type
QRV_API objref getattr(objref obj, objref key); // "key", "value", "pos", "choices"; else bad
// "value" changes the entry of the choices, through the type; false for any other key, and for an
// undefined value.
QRV_API bool setattr(cObj &obj, objref &key, objref &value);
QRV_API bool m_assign(cObj &obj, objref &arg); // true, also for an unknown key
// With text: the stream comes in a holder (cOutHolder, cInHolder).
QRV_API bool m_write(cObj &obj, objref &stream); // the key; nothing when undefined
QRV_API bool m_read(cObj &obj, objref &stream);  // nothing reads as undefined; false if not found
} // namespace cTomChoiceVal

// The methods of choice types as objects. Objects that are no cTypeObj answer false or cat::bad().
namespace cTomChoice {
// The key "choices" replaces the container, any other one is set in it; it is a new map if there
// was none. Then `changed`. False, and no signal, where the container refuses.
// RUNS USER CODE
QRV_API bool setattr(cObj &type, objref &key, objref &value);
QRV_API objref getattr(objref type, objref key);  // "choices", or an attribute of them
QRV_API bool m_write(cObj &type, objref &stream); // the choices, "#nil" without
QRV_API bool m_read(cObj &type, objref &stream);  // one value becomes the choices
} // namespace cTomChoice
