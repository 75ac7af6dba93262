#pragma once
// Scoped changes of the registry and of types, and factories for types. Each destructor
// RUNS USER CODE and discards exceptions.

#include "qrv/core/ctypes.h"

// Registers a type during its own lifetime. Each copy's destructor removes the name that the type
// had at registration, and every other entry of the type.
class QRV_API cTypeInsert {
  public:
    // Shares the type. Throws cErr(1) "Fatal: duplicate name of cTypeObj: ..." if the name exists.
    explicit cTypeInsert(cTypeObj &type);
    cTypeInsert(cTypeInsert const &other) noexcept;
    cTypeInsert &operator=(cTypeInsert const &other);
    ~cTypeInsert();

    // False for null. If the name exists: throws as above with `fatal`, else prints an error and
    // returns false.
    static bool insert(typeref const &type, bool fatal);

  private:
    explicit cTypeInsert(typeref const &) {} // prevents a conversion from a handle
    explicit cTypeInsert(objref const &) {}
    typeref type_;
    // The name of the entry. It is a string and not an object, since the core may be created again
    // meanwhile.
    std::string name_;
};

// Replaces a member of a type during its own lifetime. A copy restores the member, too.
class QRV_API cTypeModifier {
  public:
    cTypeModifier(cTypeObj &type, std::string const &key, objref value); // shares type and value
    cTypeModifier(cTypeModifier const &other) = default;
    cTypeModifier &operator=(cTypeModifier const &) = delete;
    ~cTypeModifier();

  private:
    cTypeModifier(cObj &, std::string const &, objref) {} // prevents a conversion from an object
    typeref type_;
    std::string key_;
    objref previous_;
};

// A factory of a type, registered in the repository for this interface under the type's name.
class QRV_API cTypeCtor {
  public:
    cTypeCtor() = default;
    cTypeCtor(cTypeCtor const &) {}
    cTypeCtor &operator=(cTypeCtor const &) { return *this; }
    virtual typeref make() = 0; // the caller owns the result; null on failure
    virtual ~cTypeCtor();
};
