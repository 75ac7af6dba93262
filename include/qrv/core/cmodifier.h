#pragma once
// Scoped changes of the registry and of types, and the deferred factory of types.
// The destructors run user code and let nothing escape.

#include "qrv/core/ctypes.h"

// Registers a type for its own lifetime. Each copy removes at its end the name that the type had at
// the beginning, and every other entry of the type.
class QRV_API cTypeInsert {
  public:
    // Shares the type. Throws cErr(1) "Fatal: duplicate name of cTypeObj: ..." if the name is
    // taken.
    explicit cTypeInsert(cTypeObj &type);
    cTypeInsert(cTypeInsert const &other) noexcept;
    cTypeInsert &operator=(cTypeInsert const &other);
    ~cTypeInsert();

    // A taken name: throws as above with fatal, else prints three lines and gives false.
    static bool insert(typeref const &type, bool fatal);

  private:
    explicit cTypeInsert(typeref const &) {} // only keeps a handle from converting
    explicit cTypeInsert(objref const &) {}
    typeref type_;
    std::string name_; // of the entry; no object, since the core may be made anew meanwhile
};

// Replaces a member of a type for its own lifetime. A copy restores too.
class QRV_API cTypeModifier {
  public:
    cTypeModifier(cTypeObj &type, std::string const &key, objref value); // shares type and value
    cTypeModifier(cTypeModifier const &other) = default;
    cTypeModifier &operator=(cTypeModifier const &) = delete;
    ~cTypeModifier();

  private:
    cTypeModifier(cObj &, std::string const &, objref) {} // only keeps an object from converting
    typeref type_;
    std::string key_;
    objref previous_;
};

// A factory of a type, entered in the repository for this interface under the type's name.
class QRV_API cTypeCtor {
  public:
    cTypeCtor() = default;
    cTypeCtor(cTypeCtor const &) {}
    cTypeCtor &operator=(cTypeCtor const &) { return *this; }
    virtual typeref make() = 0; // adopted by the caller; null on failure
    virtual ~cTypeCtor();
};
