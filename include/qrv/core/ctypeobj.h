#pragma once
// Type objects. A cTypeObj defines what the objects of a type can do: a name, a table of twelve
// standard methods, a hash of further named members, converters from other types, and two hooks
// that make its objects usable as keys. It is an object itself; its type is its metatype.
//
// A call of a method reads only the table: one load and one indirect call. A slot is set only after
// the executable's prototype was compared with the method's (validate_exe), so a call always uses
// the function's actual type. Base types are not searched: inherit() has copied their members.

#include "qrv/core/cattrhash.h"
#include "qrv/core/cobj.h"

#include <map>

// The type in which functions are stored. They are cast back before a call.
using cVoidFunction = void (*)();

class QRV_API cTypeObj : public cObj {
  public:
    using method_id = ::method_id;
    using setup_function = void (*)(cTypeObj &);
    using converter_function = bool (*)(cObj &destination, objref &source);
    using hash_function = unsigned int (*)(objref const &);
    using heq_function = bool (*)(objref const &, objref const &);

    // A named type; setup may be null. Starts the object core, unless the name is that of a
    // built-in type. Does not register the type: see cTypeInsert.
    explicit cTypeObj(char const *name, setup_function setup = nullptr);
    explicit cTypeObj(setup_function setup = nullptr);
    // An instance of a metatype (borrowed), initialised by the metatype's `create`. A null name is
    // "", a null metatype cat::typetype().
    cTypeObj(cTypeObj *metatype, char const *name, setup_function setup);
    explicit cTypeObj(int) = delete; // 0 could be a name or a setup
    ~cTypeObj() override;
    cTypeObj(cTypeObj const &) = delete;
    cTypeObj &operator=(cTypeObj const &) = delete;

    std::string const &name() const noexcept { return name_; }
    void set_name(std::string const &name) { name_ = name; } // does not change the registry
    bool operator==(cTypeObj const &other) const noexcept { return this == &other; }
    bool operator!=(cTypeObj const &other) const noexcept { return this != &other; }

    // Members. After construction, only set_tmember changes the method table. It shares the value;
    // null or badfind removes. Under the name of a standard method it ignores values that are not
    // executables. RUNS USER CODE
    //   0x50000000 "Executable, key '...', must be cExeMember"
    cAttrHash &tmmap() noexcept { return tmmap_; }
    cAttrHash const &tmmap() const noexcept { return tmmap_; }
    [[nodiscard]] objref tmember(objref const &key) const; // badfind if it does not exist
    [[nodiscard]] objref tmember(std::string const &key) const;
    void set_tmember(objref const &key, objref value);
    void set_tmember(std::string const &key, objref value);
    // Sets all members of base in this type, in the same order; shares them. Does not copy
    // converters.
    void inherit(cTypeObj const &base);
    // Takes over the choices or specifications of a repeated declaration. False for another
    // metatype. RUNS USER CODE
    bool update_from(cTypeObj const &other);

    // Standard methods.
    static std::string const &name_of(int id); // "UNKNOWN METHOD" for another number
    // Sets `id` if there is a standard method of this name.
    static bool is_stdmethod(std::string const &name, method_id &id);
    // False after the error 0x50000000 "Standard method '...'  has bad prototype in object type:
    // ...", even if a handler forgives it.
    static bool validate_exe(int id, cExeFunction const &exe, char const *type_name);
    // Null if the type has no such method. The number must be valid.
    cVoidFunction method(method_id id) const noexcept { return methods_[id]; }
    // For a built-in type whose objects have a value or entries: the methods that are still the
    // library's, as bits 1 << method_id, and the class of such objects. For other types 0 and
    // `other`. core/cbuiltin.h has the tests.
    unsigned library_methods() const noexcept { return library_methods_; }
    cObjClass value_class() const noexcept { return value_class_; }
    // An object created by the type's method. If there is no method: bad after the error, or nil if
    // a handler forgives it. RUNS USER CODE
    [[nodiscard]] objref newobj() const;

    // Makes this type count its objects: an object that is created with the type afterwards, or
    // gets it by set_type, keeps the type alive like an owner. Existing objects continue to borrow
    // it. The reader calls this for types that text declares inside a cat::TypeScope.
    void count_objects() noexcept;
    bool counts_objects() const noexcept { return counts_; }
    std::uint32_t objects() const noexcept { return objects_; } // only the counted ones

    // Converters to this type, from sources that are borrowed. A null function removes the
    // converter; converter() returns null if it does not exist.
    void set_converter(cTypeObj &source, converter_function function);
    converter_function converter(cTypeObj &source) const;
    void inherit_converters(cTypeObj const &base);

    // Key hooks. Only the first set_hash has an effect; later calls are silently ignored. Without
    // hooks, the hash is 0 and no keys are equal. RUNS USER CODE
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

    // Calls through the table. If the slot is empty: 0x48000000 "Call of missed standard method
    // '...".
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
    void set_library_methods(cObjClass value_class) noexcept; // records the current ones

    std::string name_;
    struct cConverter {
        converter_function function;
        // The obid of a source that counts its objects, since such a type may be destroyed; else 0.
        unsigned int source_id;
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

    mutable cHeldMember last_member_; // core/cmember_lookup.cpp; destroyed after the members
    cAttrHash tmmap_;
    hash_function hash_ = nullptr;
    heq_function heq_ = nullptr;
    bool counts_ = false;
    std::uint32_t objects_ = 0;
};

// The key hooks of the built-in types, for types with the same kind of value. The hash functions
// return 0 for null; the heq functions do not accept null.
namespace cat {
QRV_API unsigned int hash_string(objref const &value);
QRV_API bool heq_string(objref const &a, objref const &b);
QRV_API unsigned int hash_int(objref const &value);
QRV_API bool heq_int(objref const &a, objref const &b);
QRV_API unsigned int hash_float(objref const &value);
QRV_API bool heq_float(objref const &a, objref const &b);
QRV_API unsigned int hash_double(objref const &value);
QRV_API bool heq_double(objref const &a, objref const &b);
// h = h * 31 ^ c for each byte: the hash of strings, also in the repository.
QRV_API unsigned int hash_bytes(char const *bytes, size_t count) noexcept;
} // namespace cat
