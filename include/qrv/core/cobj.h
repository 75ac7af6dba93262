#pragma once
// cObj, the universal value: a counted object that knows its type, has an id and, if needed, a
// private map of members. It has no value itself; its subclasses do.
//
// Almost nothing is virtual. A generic operation first looks for an executable among the object's
// own members (only if the object has the flag of_exe_member); otherwise it makes one indexed call
// through the method table of the type. Operations that do this are marked: RUNS USER CODE.
//
// An operation that fails composes an error on eros(), sends it by cat::sig_error(), and returns
// false or an objref that is not good: null, cat::bad() or cat::badfind(). Only the handlers of
// that signal throw exceptions. The tests of states and call() have static forms, which accept null
// and handles.

#include "qrv/core/cindex.h"
#include "qrv/core/cobjbase.h"

#include <string>

namespace cat {
QRV_API cTypeObj &type_nil();
bool destroy_scalar(cObj *target);       // core/cregistry.h
bool detach_value(objref const &target); // core/cregistry.h
} // namespace cat

// The standard methods of a type, in the order of its table: name and prototype (see cexe.h).
#define QRV_METHODS(X)                                                                             \
    X(newobj, cFunction1)                                                                          \
    X(newref, cFunction1)                                                                          \
    X(create, cProcedure1)                                                                         \
    X(assign, cProcedure2)                                                                         \
    X(add, cProcedure2)                                                                            \
    X(setattr, cProcedure3)                                                                        \
    X(getattr, cFunction2)                                                                         \
    X(write, cProcedure2)                                                                          \
    X(read, cProcedure2)                                                                           \
    X(equal, cProcedure2)                                                                          \
    X(less, cProcedure2)                                                                           \
    X(iterobj, cFunction1)

// Index into the method table: mid_newobj and so on, one for each method.
#define QRV_METHOD_ID(name, prototype) mid_##name,
enum method_id : int { QRV_METHODS(QRV_METHOD_ID) mid_count };
#undef QRV_METHOD_ID

// The C++ class of an object, where the library needs it: cObjDR<T>, cMapObj or cExeObj, or a class
// derived from it. A test of this byte replaces a dynamic_cast.
enum class cObjClass : std::uint8_t {
    other,
    string,
    integer,
    float_number,
    double_number,
    boolean,
    map,
    executable
};

namespace cat {
// A built-in type, as an argument of a constructor: such types do not count their objects, so the
// constructor need not check that.
struct cBuiltinType {
    cTypeObj *type;
};
} // namespace cat

// Where the members are defined, and which file to suspect:
//   core/cobj.cpp                identity, states, operators, generic operations, own_method; keys
//   core/cexe_call.cpp           call
//   core/cobj_member.cpp         append, copyitem, own, type and global members, comments, changed
//   containers/cattr.cpp         operator[]
//   containers/cobj_map.cpp      operator/ of an int, getattr_force, ommap of a map
//   containers/cobj_walk.cpp     begin, end
//   containers/cobj_slice.cpp    getslice
//   containers/cobj_owner.cpp    is_owner_of
//   containers/cobj_attrcopy.cpp attrcopy, and the merging operator<<
//   containers/csignalobj.cpp    changed_signal, force_changed_signal
//   text/write/cobj_write.cpp    writeobj, is_writable, write_constname
//   text/read/creader_method.cpp readobj
//   text/path/                   getattrp, setattrp, each in a file of its name
//
// Errors of the operations:
//
//   0x41400000 "Object is const. Method '...' called from type: ..."
//       assign, add; if a handler forgives it, the operation continues
//   0x44000000 "Attr value, type '...': Bad call of '...", and "... Call of '...' with bad arg ..."
//       call
//   0x44000000 "Attr value, type '...': Inserted executable, key '...', must be cExeMember"
//       set_omember
//   0x48000000 "Call of missed standard method '...' in type: ..."
//       every generic operation; forgiven: true or cat::nil()
//   0x48000000 "Attr value, type '...': Missing method 'less' in this type"
//       less
//   0x50000000 "Standard method '...'  has bad prototype in object type: ..."
//       set_omember
//   0x40000001 "Nesting is too deep in object type: ..."
//       equal, attrcopy; writeobj and readobj have their own texts (docs/errors.md)
class QRV_API cObj : public cObjBase {
  public:
    // With true, the type is "niltype", and the object core is started. With false it is null until
    // set_type(), for objects that exist before types. Operations on an object without a type have
    // the same results as for "niltype".
    explicit cObj(bool typed = true);
    template <class T>
    requires(!std::is_same_v<T, bool> && !std::is_class_v<T>) explicit cObj(T) = delete;
    ~cObj() override; // RUNS USER CODE: releases the own members

    // True only for a cObjDR<T>, which refers to a value elsewhere.
    virtual bool is_ObjDR() const;

    // --- identity and type

    // The number in the census, unique in the process until 32 bits wrap. 0: not counted.
    unsigned int obid() const noexcept { return obid_; }
    void obid(unsigned int id) noexcept {
        if (id == 0 && obid_ != 0) --ob_count_;
        obid_ = id;
    }
    static void obid(cObj *obj, unsigned int id) noexcept; // no effect for null
    // Borrowed; cat::type_nil() for an object without a type.
    cTypeObj &type() const noexcept { return type_ ? *type_ : cat::type_nil(); }
    // Borrows the type, or shares it if it counts its objects (cTypeObj::count_objects). Checks
    // nothing and fires no signal. RUNS USER CODE if this object was the last owner of the old
    // type.
    void set_type(cTypeObj *type) noexcept;
    // Whether its type counts it.
    bool holds_type() const noexcept { return (class_ & holds_type_bit) != 0; }
    int typeflags_of(int bits) const noexcept; // 0 for an object without a type
    cObjClass object_class() const noexcept {
        return static_cast<cObjClass>(class_ & (holds_type_bit - 1));
    }

    // --- states: relations to the type and to the constants

    // A null pointer is void, bad and kill, but not nil, map, set or vector. The members require an
    // object, the static forms accept null.
    bool is_void() const noexcept { return is_void(this); } // without a type, or of "niltype"
    bool is_nil() const noexcept { return is_nil(this); }   // the object cat::nil()
    bool is_bad() const noexcept { return is_bad(this); }   // cat::bad() or cat::badfind()
    bool is_kill() const noexcept { return is_kill(this); } // cat::badfind(), which removes
    bool is_map() const noexcept { return is_map(this); }   // of exactly the type "map"
    bool is_set() const noexcept { return is_set(this); }
    bool is_vector() const noexcept { return is_vector(this); }
    bool is_good() const noexcept { return is_good(this); } // not bad: nil and void are good
    static bool is_void(cObj const *obj) noexcept;
    static bool is_nil(cObj const *obj) noexcept;
    static bool is_bad(cObj const *obj) noexcept;
    static bool is_kill(cObj const *obj) noexcept;
    static bool is_map(cObj const *obj) noexcept;
    static bool is_set(cObj const *obj) noexcept;
    static bool is_vector(cObj const *obj) noexcept;
    static bool is_good(cObj const *obj) noexcept { return !is_bad(obj); }
    // Flags. A type may set them for objects of any class.
    bool is_exe() const noexcept { return typeflags_of(tf_exe) != 0; }
    bool is_container() const noexcept { return typeflags_of(tf_container) != 0; }
    bool is_type() const noexcept { return flags_of(of_type) != 0; }

    // --- operators: each calls a named operation and ignores its result. RUNS USER CODE

    // In a subclass without its own assignment, the inherited one is assign() followed by a
    // memberwise copy. Declare one to avoid that.
    cObj &operator=(cObj const &source);  // assign
    cObj &operator+=(cObj const &source); // add
    cObj &operator<<(objref const &item); // append
    bool operator==(cObj const &other) const { return equal(other); }
    bool operator!=(cObj const &other) const { return !equal(other); }
    bool operator<(cObj const &other) const { return less(other); }
    // getattr. cat::bad() for a null string.
    objref operator/(objref const &key);
    objref operator/(std::string const &key);
    objref operator/(char const *key);
    objref operator/(int key);
    objref operator/(double) = delete;
    objref operator/(bool) = delete;
    // Handles (qrv/containers/cattr.h), which share this object and store the key; they read
    // nothing yet. A handle for a null string reads bad.
    cAttr operator[](objref const &key);
    cAttr operator[](std::string const &key);
    cAttr operator[](char const *key);
    cAttr operator[](int key);
    // std::out_of_range if the value does not fit in an int.
    template <cOtherIndex T> cAttr operator[](T key);
    template <cCharacter T> cAttr operator[](T) = delete;
    cAttr operator[](double) = delete;
    cAttr operator[](bool) = delete;

    // --- generic operations: the method of the type. Each RUNS USER CODE

    // assign, add, setattr, getattr, write and iterobj first look for an own method. Arguments are
    // held during the call. The method determines everything else.
    void create(); // initialises a new object; no effect for a void one
    static void create(cObj *obj);
    // A new object that refers to the value of this one; bad if the type has no such method.
    [[nodiscard]] objref newref();
    // False if this is void, or const (of_const) and no handler forgives that. True, without
    // effect, if source is null or void. Otherwise the result of the method.
    bool assign(cObj const &source);
    bool assign(objref const &source);
    bool add(cObj const &source); // the same for "add"
    bool add(objref const &source);
    bool setattr(objref const &key, objref const &value); // false for a void object
    // badfind for a void object and for a missing key; a type's method may return null.
    [[nodiscard]] objref getattr(objref const &key);
    [[nodiscard]] objref getattr(objref const &key) const;
    // The value without the type's name. The stream is valid only during the call: a holder that a
    // method keeps has no stream afterwards.
    bool write(std::ostream &os) const;
    bool read(std::istream &is);
    // False for an object of another type and for null.
    bool equal(cObj const &other) const;
    bool equal(objref const &other) const;
    // Objects of different types are ordered by the names of their types. True, after the error, if
    // the type has no `less`.
    bool less(cObj const &other) const;
    [[nodiscard]] objref iterobj(); // an iterator; bad if the type has none

    // --- the object inside a longer text. RUNS USER CODE

    // Writes "#name" for a constant, otherwise name(...) around write(), without the name for types
    // with tf_bare. False if write() fails or cat::ExactText refuses the value; also, with the
    // stream's failbit, if nesting has exhausted the stack.
    bool writeobj(std::ostream &os) const;
    bool is_writable() const; // whether the type has its own `write`, or this is a constant
    // Writes "#" and the key if this object is a value of cat::constmap(); otherwise nothing, and
    // returns false. Linear in the number of constants.
    bool write_constname(std::ostream &os) const;

    // --- conversion and copying. RUNS USER CODE

    // Converts the value of source by the type's converter and stores it. False, without an error,
    // if source is null or has no type, if there is no converter, or if it fails.
    bool convert(objref const &source);
    // A new object of the same type (of "string" for cat::nil()), copied as deeply as the type's
    // assign does it; bad on failure. After an exception, bad; with `rethrow` the exception leaves
    // the function. Own members are not copied.
    [[nodiscard]] objref clone(bool rethrow = false) const;

    // --- calls by name: own members, type members, global members. RUNS USER CODE

    // Returns the function's result; for a procedure nil if it succeeded, else bad. Bad for a null
    // `obj` and, after the error, if there is no such executable. Nil for a wrong number of
    // arguments, if a handler forgives that.
    objref call(std::string const &name);
    objref call(std::string const &name, objref const &a);
    objref call(std::string const &name, objref const &a, objref const &b);
    static objref call(cObj *obj, std::string const &name);
    static objref call(cObj *obj, std::string const &name, objref const &a);
    static objref call(cObj *obj, std::string const &name, objref const &a, objref const &b);

    // --- items. RUNS USER CODE

    bool append(objref const &item); // calls "append"; false for a null or bad item
    // Appends the pieces between the delimiters as strings, also empty pieces, except one after a
    // final delimiter. Ignores failures.
    void append_dissection(std::string const &text, char delimiter);
    // getattr; with `force`, badfind is replaced by a new map, which is stored under the key. Bad
    // if the map cannot be stored.
    [[nodiscard]] objref getattr_force(objref const &key, bool force);
    // If the key has a good value, assigns to it. False if that is nil, which refuses. If the key
    // has no good value, stores `value` itself, not a clone, even with clone_new. False for a null
    // or bad value and for a void object.
    bool copyitem(objref const &key, objref const &value, bool clone_new);
    // Whether the object `other` is a value anywhere below this one. Own members do not count. Ends
    // on cycles.
    // O(1) if `other` is known not to be a value, else linear: each container is visited once
    bool is_owner_of(cObj const &other);
    // False: no attribute of any hash has this object as its value. True also if that is not known,
    // as for all objects except maps, vectors and sets (core/cholders.h).   O(1)
    bool may_be_a_value() const noexcept {
        return class_ >= one_holder || !holders_known_ || object_class() != cObjClass::map;
    }

    // --- own members: a private map that is created for the first member

    // Call the first two only if has_ommap(). The pointer, which is borrowed, and the handle are
    // null without members.
    cAttrHash &ommap() { return *ommap_; }
    cAttrHash const &ommap() const { return *ommap_; }
    bool has_ommap() const noexcept { return ommap_.get() != nullptr; }
    cAttrHash *ommap_ptr() const noexcept { return ommap_.get(); }
    hashref const &ommap_ref() const noexcept { return ommap_; }
    // Replace the whole map, then fire `changed` of the new one. RUNS USER CODE: the old map is
    // released. Executables in the new map are used as methods only if set_omember has stored one
    // before (of_exe_member).
    // Shares `hash` and becomes its father if it has none. Null removes the map.
    void ommap(hashref const &hash);
    void ommap(cMapObj const &map); // shares the map's hash, which keeps its father
    // Clones the key, shares the value; a kill value removes the member. False for a void key and
    // for cat::bad(). An executable gets the key as its name. It must be a cExeMember or of a type
    // with tf_free_exe, and match the prototype of a standard method with that name; otherwise it
    // is not stored (0x44000000, 0x50000000), and the result is true if a handler forgives
    // 0x44000000. Fires `changed`, except for a refused executable. RUNS USER CODE
    bool set_omember(objref const &key, objref value);
    bool set_omember(std::string const &key, objref value);
    [[nodiscard]] objref omember(objref const &key) const; // badfind if it does not exist
    [[nodiscard]] objref omember(std::string const &key) const;
    // The member, if it is of exactly that type. Otherwise a new object of the type, or the example
    // itself (shared), replaces it. Bad or badfind for "niltype", for a bad example, and if storing
    // fails. RUNS USER CODE
    objref force_omember(objref const &key, cTypeObj const &type);
    objref force_omember(std::string const &key, cTypeObj const &type);
    objref force_omember(objref const &key, objref const &example);
    objref force_omember(std::string const &key, objref const &example);

    // --- members of any kind: own ones, then those of the type, then global ones

    [[nodiscard]] objref gmember(objref const &key) const; // the first good one; else badfind
    [[nodiscard]] objref gmember(std::string const &key) const;
    // The stored reference itself. If the key does not exist anywhere, an own member nil is
    // created. Valid while its node exists. Writing to a member of the type or to a global member
    // changes it for all, without a check and without `changed`. For a key that cannot be stored or
    // found: a scratch reference, which each such call resets. RUNS USER CODE
    objref &gmember_(objref const &key);
    objref &gmember_(std::string const &key);

    // The own member "//". False, with the text unchanged, if the member is void or does not
    // convert to a string. RUNS USER CODE
    bool get_comment(std::string &text) const;
    // False if one exists, unless `replace`.
    bool set_comment(std::string const &text, bool replace);

    // True if calls use the own members (of_exe_member) and one has the method's name; `exe`,
    // borrowed, is then the member, or null if that is not an executable.
    bool own_method(method_id id, cExeObj *&exe) const;

    // --- cursors, slices, copying. RUNS USER CODE

    cIterObj begin(); // of iterobj(); not valid if the type has no iterator
    cIterObj end();   // the position after the last entry; calls iterobj() again
    cIterObj begin() const;
    cIterObj end() const;
    // A new vector that shares the values at the positions start to start + count - 1; positions
    // below 0 are ignored. With `type` only values of exactly that type; the others still count as
    // positions. Never null; empty if this object has no iterator.
    [[nodiscard]] objref getslice(int start, int count, cTypeObj *type);
    // Copies source to this container. Three letters are commands for three classes of keys: those
    // only in this container, in both, and only in source. The first lines of
    // containers/cobj_attrcopy.cpp list the letters; null is "". Parts that contain themselves are
    // copied once. False if source has no iterator, if a step other than an append fails, or if
    // nesting has exhausted the stack (0x40000001).
    bool attrcopy(cObj const &source, char const *commands);

    // --- notification of changes: the signal is the own member "changed"

    // Fires the signal, if it exists; a slot may destroy this object. RUNS USER CODE
    void changed() const;
    cSignal *changed_signal() const; // borrowed from the member; null without one
    // Replaces a member of another type by a new signal. If that cannot be stored: a scratch
    // signal, which each such call disconnects. RUNS USER CODE
    cSignal &force_changed_signal();

    // --- paths and reading. RUNS USER CODE

    // The value at keys separated by slashes, a/b/0. badfind if a key is not found, null if the
    // last step returns it. bad for an invalid path, which is reported as a line of the message
    // output.
    [[nodiscard]] objref getattrp(std::string const &path);
    // Writes a value, which is shared. The path may end in an operator:
    //   = or none  assigns to a good existing value, else stores   +=  adds to the existing value
    //   &=         stores; null removes                            <<  appends to it
    // With `force`, missing levels are created as maps (but no target of <<, and of += only a map).
    // False if a step fails or there is no key. Errors in the path, code 0x40000001, are sent to
    // cat::errhandler() or the current cat::ReadReport; errors of the operations as usual.
    bool setattrp(std::string const &path, objref const &value, bool force);
    // Any number of statements, "a/b = 1; list << 2", with values as in files. A statement that
    // fails does not stop the others; text that cannot be split into statements does. False if any
    // failed.
    bool setattrp(std::string const &text, bool force);
    template <class T> // without this, a value would be converted to `force`
    requires(std::is_convertible_v<T, cObj const *>) bool setattrp(std::string const &path,
                                                                   T const &value) = delete;
    // Reads one value as cAttrScan::scan_obj does. 0: `result` is the value, without the parts of a
    // container that were reported as errors. -1: a closing bracket or the end of input. Positive:
    // the code of a reported error; `result` is unchanged. A null `delim` is not set; a null text
    // is empty.
    static int readobj(std::istream &is, objref &result, int *delim = nullptr);
    static int readobj(char const *text, objref &result, int *delim = nullptr);

  protected:
    // Borrows the type; null as for cObj(false).
    explicit cObj(cTypeObj *type, cObjClass object_class = cObjClass::other) noexcept;
    inline cObj(cat::cBuiltinType type, cObjClass object_class) noexcept; // defined in cobjd.h
    // Call before_change() before the object's value is changed in place, and before_giving_out()
    // before a reference is returned by which it may be changed at any time. Both notify the sets
    // that find the object by its value.
    void before_change() const noexcept {
        if (index_ != 0 && index_ != index_given_out) [[unlikely]]
            leave_set_index();
    }
    void before_giving_out() const noexcept {
        before_change();
        index_ = index_given_out;
    }
    // For the destructor of the class in object_class(): members that are destroyed after it may
    // still access the object.
    void end_class() noexcept { class_ &= holds_type_bit; }

  private:
    cObj(cObj const &) = delete;
    // Merges source into this: attrcopy(source, "-xx"). Private, since `a << b` with objects looks
    // like appending.
    cObj &operator<<(cObj const &source);

    friend bool cat::destroy_scalar(cObj *target);
    friend bool cat::detach_value(objref const &target);
    friend class cSetIndex;
    friend struct cHolders;
    static constexpr std::uint16_t index_given_out = 0xFFFF;
    static constexpr std::uint16_t holds_type_bit = 0x100;
    static constexpr std::uint16_t one_holder = 0x200;

    void leave_set_index() const noexcept;
    void release_type() noexcept;
    void leave_ommap() noexcept; // ends being the father of a member map that others own too
    bool may_be_member(objref const &key, objref const &value, bool &refused);

    cTypeObj *type_;
    std::uint32_t obid_;
    // The cObjClass in the lower byte, then holds_type_bit, and above it the number of attributes
    // with this value (core/cholders.h): one test checks class and type.
    std::uint16_t class_;
    mutable std::uint16_t index_ = 0; // the set index that contains it (core/cset_index.h)
    static bool holders_known_;
    hashref ommap_;
};

// Temporary keys. The result of make_key refers to the caller's string or number and must not
// outlive it; that of own_key has a copy. Both are const and not in the census.
[[nodiscard]] QRV_API objref make_key(std::string const &text);
[[nodiscard]] QRV_API objref make_key(int const &number);
[[nodiscard]] QRV_API objref own_key(std::string const &text);
[[nodiscard]] QRV_API objref own_key(int number);
