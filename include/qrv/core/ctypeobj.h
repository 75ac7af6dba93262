#pragma once
// Type objects. A cTypeObj says what the objects of a type can do: a name, a table of twelve
// standard methods, a hash of further named members, converters from other types, and two hooks
// that make the type usable as a key. It is an object itself, whose type is its metatype.
//
// Dispatch reads nothing but the table: one load and one indirect call. A slot is filled only
// after the executable's prototype was held against its method (validate_exe), so a call through
// it always goes to exactly the function's own type. There is no search through base types:
// inherit() has copied what a type takes over.

#include "qrv/core/cattrhash.h"
#include "qrv/core/cobj.h"

#include <map>

using cVoidFunction = void (*)(); // generic form in which functions are held; cast back to call

class QRV_API cTypeObj : public cObj {
  public:
    using method_id = ::method_id;
    using setup_function = void (*)(cTypeObj &);
    using converter_function = bool (*)(cObj &destination, objref &source);
    using hash_function = unsigned int (*)(objref const &);
    using heq_function = bool (*)(objref const &, objref const &);

    // A named type; a null setup is allowed. Starts the object core unless the name is one of the
    // built-in ones. The type isn't registered: see cTypeInsert.
    explicit cTypeObj(char const *name, setup_function setup = nullptr);
    explicit cTypeObj(setup_function setup = nullptr);
    // An instance of a metatype (borrowed), filled by the metatype's `create`; a null name is "", a
    // null metatype cat::typetype().
    cTypeObj(cTypeObj *metatype, char const *name, setup_function setup);
    explicit cTypeObj(int) = delete; // 0 would be a name or a setup
    ~cTypeObj() override;
    cTypeObj(cTypeObj const &) = delete;
    cTypeObj &operator=(cTypeObj const &) = delete;

    std::string const &name() const noexcept { return name_; }
    void set_name(std::string const &name) { name_ = name; } // the registry isn't told
    bool operator==(cTypeObj const &other) const noexcept { return this == &other; }
    bool operator!=(cTypeObj const &other) const noexcept { return this != &other; }

    // Members. set_tmember is the only writer of the method table after construction.
    //   0x50000000 "Executable, key '...', must be cExeMember"
    cAttrHash &tmmap() noexcept { return tmmap_; }
    cAttrHash const &tmmap() const noexcept { return tmmap_; }
    [[nodiscard]] objref tmember(objref const &key) const; // badfind when missing
    [[nodiscard]] objref tmember(std::string const &key) const;
    void set_tmember(objref const &key, objref value); // null or badfind removes
    void set_tmember(std::string const &key, objref value);
    // Shares every member of base, in its order, over those of this type; no converters.
    void inherit(cTypeObj const &base);
    // Takes over what a repeated definition changes; false for another metatype.
    bool update_from(cTypeObj const &other);

    // Standard methods.
    static std::string const &name_of(int id); // "UNKNOWN METHOD" outside the table
    static bool is_stdmethod(std::string const &name, method_id &id);
    // 0x50000000 "Standard method '...'  has bad prototype in object type: ..."; then false,
    // whatever a handler did.
    static bool validate_exe(int id, cExeFunction const &exe, char const *type_name);
    cVoidFunction method(method_id id) const noexcept { return methods_[id]; }
    // Of a built-in type whose objects hold a value or entries: the methods that are still those of
    // the library, as bits 1 << method_id, and the class of such an object. 0 and `other` for the
    // rest. core/cbuiltin.h has the tests.
    unsigned library_methods() const noexcept { return library_methods_; }
    cObjClass value_class() const noexcept { return value_class_; }
    [[nodiscard]] objref newobj() const; // RUNS USER CODE

    // From now on this type counts its objects: one that is created of the type, or gets it by
    // set_type, keeps the type alive as a count of owners would. Objects that have the type already
    // go on borrowing it. The reader calls it for the types that text declares inside a
    // cat::TypeScope.
    void count_objects() noexcept;
    bool counts_objects() const noexcept { return counts_; }
    std::uint32_t objects() const noexcept { return objects_; } // those that are counted

    // Converters to this type; a null function removes.
    void set_converter(cTypeObj &source, converter_function function);
    converter_function converter(cTypeObj &source) const;
    void inherit_converters(cTypeObj const &base);

    // Key hooks. The first set_hash wins; a second is ignored silently.
    void set_hash(hash_function hash, heq_function heq) noexcept;
    unsigned int hashfun(objref const &value) const { return hash_ ? hash_(value) : 0; }
    bool hasheq(objref const &a, objref const &b) const { return heq_ && heq_(a, b); }
    bool is_keytype() const noexcept { return heq_ != nullptr; }
    hash_function hash_hook() const noexcept { return hash_; }
    heq_function heq_hook() const noexcept { return heq_; }

  private:
    friend class cObj;
    friend struct cBootstrap;
    friend struct cLastMember;

    // Calls of the table. An empty slot: 0x48000000 "Call of missed standard method '...".
    bool pexec(method_id id, cObj &a) const;
    bool pexec(method_id id, cObj &a, objref &b) const;
    bool pexec(method_id id, cObj &a, objref &b, objref &c) const;
    objref oexec(method_id id, objref a) const;
    objref oexec(method_id id, objref a, objref b) const;
    bool missing_method(method_id id) const;

    void leave_object();

    void begin_construction(char const *name);
    void ctor_internal(cTypeObj *metatype, setup_function setup);
    void install_default_methods();
    void install_raw_string_methods();
    void set_method(method_id id, cVoidFunction function) noexcept;
    void set_library_methods(cObjClass value_class) noexcept; // those that it has now

    std::string name_;
    struct cConverter {
        converter_function function;
        unsigned int source_id; // of a source that counts its objects, so that it may end; else 0
    };

    std::map<cTypeObj *, cConverter> converters_;
    cVoidFunction methods_[mid_count]{};
    unsigned library_methods_ = 0;
    cObjClass value_class_ = cObjClass::other;
    struct cHeldMember {
        cHeldMember() noexcept = default;
        cHeldMember(cHeldMember const &) = delete;
        cHeldMember &operator=(cHeldMember const &) = delete;
        ~cHeldMember() {
            if (node) node->unhold();
        }
        cAttrNode const *node = nullptr;
    };

    mutable cHeldMember last_member_; // core/cmember_lookup.cpp; ends after the members
    cAttrHash tmmap_;
    hash_function hash_ = nullptr;
    heq_function heq_ = nullptr;
    bool counts_ = false;
    std::uint32_t objects_ = 0;
};

// The key hooks of the built-in types, for types that hold the same kind of value.
namespace cat {
QRV_API unsigned int hash_string(objref const &value);
QRV_API bool heq_string(objref const &a, objref const &b);
QRV_API unsigned int hash_int(objref const &value);
QRV_API bool heq_int(objref const &a, objref const &b);
QRV_API unsigned int hash_float(objref const &value);
QRV_API bool heq_float(objref const &a, objref const &b);
QRV_API unsigned int hash_double(objref const &value);
QRV_API bool heq_double(objref const &a, objref const &b);
// h = h * 31 ^ c over the bytes: the hash of texts, also in the repository.
QRV_API unsigned int hash_bytes(char const *bytes, size_t count) noexcept;
} // namespace cat
