#pragma once
// Choices: enumerations that are created at run time. A choice type is a type object of the
// metatype "choice" with a type member "choices", which is a map or another container. A value of
// such a type is a cursor over the container: its position is the value.
//
//   Position     is_undefined()   reason
//   at a choice  false            a key that the choices have
//   undefined    true             the end position: set_undefined(), an empty string
//   lost         true             null, after update(): the choice was removed, or the value was
//                                 undefined
//
// A change of the choices through the attributes of the type fires cObj::changed(), and each value
// that follows its type calls update(). Values that the system creates (newobj, clone, reading)
// follow; a value from a constructor follows on demand. Code that changes the container itself must
// call type.changed(); otherwise each value notices the change at its next update().
//
// A value keeps its type alive, also after the type is removed from the registry. A type whose
// choices contain a value of this type is a cycle and never freed; reading text creates no such
// cycle.

#include "qrv/containers/citerobj.h"
#include "qrv/core/ctypeobj.h"

class QRV_API cChoiceVal : public cIterObj {
  public:
    // At the first choice, undefined without choices. Shares the type; null is "niltype", a type
    // without choices. Every constructor RUNS USER CODE.
    explicit cChoiceVal(cTypeObj *type, bool follow = false);
    // A value of the same type that does not follow. At the key of `other`, undefined if the type
    // no longer has it.
    cChoiceVal(cChoiceVal const &other);
    // The type is cat::find_type(type_name). At the first choice for a null key, undefined for an
    // unknown key.
    cChoiceVal(std::string const &type_name, char const *key);
    ~cChoiceVal() override;

    // The container at the last update(), or null if the type has another one now: then a change
    // has not been noticed yet.
    objref choices() const;

    // All by assign(): for a value or an iterator its key, anything else is the key. An unknown key
    // has no effect. RUNS USER CODE: key hooks
    cChoiceVal &operator=(cChoiceVal const &other);
    cChoiceVal &operator=(cObj const &other);
    cChoiceVal &operator=(std::string const &key);
    cChoiceVal &operator=(char const *key); // null has no effect
    cChoiceVal &operator=(int key);

    typeref const &held_type() const noexcept { return held_; } // the type at construction

    // Moves to the end position. A lost value stays lost if it has no container.
    void set_undefined() { setpos(-1); }
    bool is_undefined() const { return !valid(); }

    // If the choices are another container: moves to the same key, else to the first choice; an
    // undefined value is lost. Otherwise as in cIterObj. False if lost. RUNS USER CODE
    bool update() override;

  private:
    objref type_choices() const; // null without choices
    bool saw(objref const &choices) const;
    void go_to(objref const &choices);

    typeref held_;
    cObj const *seen_ = nullptr; // the choices at the last update: borrowed, only compared
    unsigned int seen_id_ = 0;
};

// The methods of the values of choice types. For objects that are not a cChoiceVal they return
// false or cat::bad().
namespace cTomChoiceVal {
QRV_API objref newobj(objref type);             // follows its type; bad if `type` is not a type
QRV_API objref getattr(objref obj, objref key); // "key", "value", "pos", "choices"; else bad
// "value" changes the entry in the choices, through the type. False for any other key, and for an
// undefined value.
QRV_API bool setattr(cObj &obj, objref &key, objref &value);
QRV_API bool m_assign(cObj &obj, objref &arg); // true, also for an unknown key
// Write and read text; `stream` is a holder of the stream (cOutHolder, cInHolder).
QRV_API bool m_write(cObj &obj, objref &stream); // the key; nothing if undefined
// Empty text reads as undefined. False for a key that does not exist.
QRV_API bool m_read(cObj &obj, objref &stream);
} // namespace cTomChoiceVal

// The methods of choice types as objects. For objects that are not a cTypeObj they return false or
// cat::bad().
namespace cTomChoice {
// The key "choices" replaces the container; any other key is set in the container, which is created
// if necessary. Fires `changed`. If the container refuses: false, and no signal. RUNS USER CODE
QRV_API bool setattr(cObj &type, objref &key, objref &value);
QRV_API objref getattr(objref type, objref key);  // "choices", or an attribute of them
QRV_API bool m_write(cObj &type, objref &stream); // the choices; "#nil" without choices
QRV_API bool m_read(cObj &type, objref &stream);  // the value that was read becomes the choices
} // namespace cTomChoice
