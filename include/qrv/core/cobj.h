#pragma once
// cObj, the universal value: a counted object that knows its type, carries an id and, when asked
// to, a private map of members. It holds no value itself; its subclasses do.
//
// Nearly no behaviour is virtual. A generic operation first looks for an executable among the
// object's own members (only if the object has of_exe_member), and else makes one indexed call
// through the method table of the type. So marked operations RUNS USER CODE.
//
// Failures are composed on eros(), sent through cat::sig_error() and returned: a good objref is
// neither null nor cat::bad() nor cat::badfind(). Exceptions come only from the handlers of that
// signal. A null object reaches the state tests and call() by
// their static forms, to which a cRef converts.

#include "qrv/core/cindex.h"
#include "qrv/core/cobjbase.h"

#include <string>

namespace cat {
QRV_API cTypeObj &type_nil();
bool destroy_scalar(cObj *target);       // core/cregistry.h
bool detach_value(objref const &target); // there too
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

// The C++ class of an object, as far as the library has to know it: cObjDR<T>, cMapObj or cExeObj,
// or derived from it. A test of this byte takes the place of a dynamic_cast.
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
// One of the built-in types, as an argument of a constructor: such a type does not count its
// objects, so the constructor need not ask.
struct cBuiltinType {
    cTypeObj *type;
};
} // namespace cat

// Where the members are defined, and when to suspect which file:
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
// Errors that the operations raise:
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
//       equal, attrcopy; writeobj and readobj have texts of their own (docs/errors.md)
class QRV_API cObj : public cObjBase {
  public:
    // With true the type is "niltype", and the object core is started; with false it is null until
    // set_type: needed before types exist. All operations on an object without a type answer as for
    // one of "niltype".
    explicit cObj(bool typed = true);
    template <class T>
    requires(!std::is_same_v<T, bool> && !std::is_class_v<T>) explicit cObj(T) = delete;
    ~cObj() override; // RUNS USER CODE: releases the own members

    // True only for cObjDR<T>, which refers to a value that lives elsewhere.
    virtual bool is_ObjDR() const;

    // --- identity and type

    // The number in the census, unique in the process until 32 bits wrap. 0 means: not counted.
    unsigned int obid() const noexcept { return obid_; }
    // 0 takes the object off the census, once. Another number after that would count the object
    // down a second time when it is destroyed.
    void obid(unsigned int id) noexcept {
        if (id == 0 && obid_ != 0) --ob_count_;
        obid_ = id;
    }
    static void obid(cObj *obj, unsigned int id) noexcept; // null: nothing
    // Borrowed; cat::type_nil() for an object without a type.
    cTypeObj &type() const noexcept { return type_ ? *type_ : cat::type_nil(); }
    // Borrows the type, unless it counts its objects (cTypeObj::count_objects); no check, no
    // signal. The object leaves the count of its old type. RUNS USER CODE if it was the last thing
    // that kept that type.
    void set_type(cTypeObj *type) noexcept;
    bool holds_type() const noexcept { return (class_ & holds_type_bit) != 0; } // is it counted?
    int typeflags_of(int bits) const noexcept; // 0 for an object without a type
    cObjClass object_class() const noexcept {
        return static_cast<cObjClass>(class_ & (holds_type_bit - 1));
    }

    // --- states: relations to the type and to the sentinels

    // A null pointer is void, bad and kill, and none of nil, map, set, vector. The members are for
    // live objects, the static forms accept null.
    bool is_void() const noexcept { return is_void(this); } // without a type, or of "niltype"
    bool is_nil() const noexcept { return is_nil(this); }   // this very object: cat::nil()
    bool is_bad() const noexcept { return is_bad(this); }   // cat::bad() or cat::badfind()
    bool is_kill() const noexcept { return is_kill(this); } // cat::badfind(): removes, as a value
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
    // Flags, which are claims: a type may set them for objects of any class.
    bool is_exe() const noexcept { return typeflags_of(tf_exe) != 0; }
    bool is_container() const noexcept { return typeflags_of(tf_container) != 0; }
    bool is_type() const noexcept { return flags_of(of_type) != 0; }

    // --- operators: one named operation each, whose result is dropped. RUNS USER CODE

    // A subclass that declares none of its own inherits assignment as assign() followed by
    // memberwise copying; declare it to be sure.
    cObj &operator=(cObj const &source);  // assign
    cObj &operator+=(cObj const &source); // add
    cObj &operator<<(objref const &item); // append
    bool operator==(cObj const &other) const { return equal(other); }
    bool operator!=(cObj const &other) const { return !equal(other); }
    bool operator<(cObj const &other) const { return less(other); }
    // getattr. A null text is cat::bad().
    objref operator/(objref const &key);
    objref operator/(std::string const &key);
    objref operator/(char const *key);
    objref operator/(int key);
    objref operator/(double) = delete;
    objref operator/(bool) = delete;
    // Handles (qrv/containers/cattr.h), which share this object and hold the key; nothing is read
    // yet. A null text makes a handle that reads bad.
    cAttr operator[](objref const &key);
    cAttr operator[](std::string const &key);
    cAttr operator[](char const *key);
    cAttr operator[](int key);
    // std::out_of_range for what an int can't hold.
    template <cOtherIndex T> cAttr operator[](T key);
    template <cCharacter T> cAttr operator[](T) = delete;
    cAttr operator[](double) = delete;
    cAttr operator[](bool) = delete;

    // --- generic operations: the method of the type; all RUNS USER CODE

    // assign, add, setattr, getattr, write and iterobj look for an own method first. Arguments are
    // held for the length of the call. The rest is up to the type's method.
    void create(); // what the type does with a fresh object; nothing for a void one
    static void create(cObj *obj);
    // A new object that refers to the value of this one; bad where the type has no such method.
    [[nodiscard]] objref newref();
    // False if this is void, or const (of_const) and not forgiven. True, with nothing changed, if
    // source is null or void. Else what the method returns.
    bool assign(cObj const &source);
    bool assign(objref const &source);
    bool add(cObj const &source); // the same for "add"
    bool add(objref const &source);
    bool setattr(objref const &key, objref const &value); // false for a void object
    // badfind for a void object and for what isn't there; a type's method may return null.
    [[nodiscard]] objref getattr(objref const &key);
    [[nodiscard]] objref getattr(objref const &key) const;
    // The value without the type's name. The stream is lent for the call: what a method keeps of
    // its holder has no stream afterwards.
    bool write(std::ostream &os) const;
    bool read(std::istream &is);
    bool equal(cObj const &other) const;   // objects of different types are unequal
    bool equal(objref const &other) const; // false for null
    // Objects of different types are ordered by their types' names. True, after the error, where
    // the type has no `less`.
    bool less(cObj const &other) const;
    [[nodiscard]] objref iterobj(); // an iterator, adopted; bad where the type has none

    // --- the object inside a larger text. RUNS USER CODE

    // "#name" of a constant, or name(...) around write(), without name for types with tf_bare.
    // False if write() failed; if cat::ExactText refused; and, with the stream's failbit set, where
    // nesting has used up the stack.
    bool writeobj(std::ostream &os) const;
    bool is_writable() const; // has the type a `write` of its own, or is this a named constant?
    // Writes "#" and the key when this very object is a value of cat::constmap(), else nothing and
    // false. Linear in the constants.
    bool write_constname(std::ostream &os) const;

    // --- conversion and copying. RUNS USER CODE

    // Takes the value of source by the type's converter. False, without an error, if source is null
    // or without a type, if there is no converter, or if it failed.
    bool convert(objref const &source);
    // A new object of the same type (of "string" for cat::nil()), as deep as the type's assign; bad
    // on failure. Exceptions become bad, or continue with rethrow. Own members are not copied.
    [[nodiscard]] objref clone(bool rethrow = false) const;

    // --- calls by name: own members, type members, global members. RUNS USER CODE

    // What a function returns; for a procedure nil if it succeeded, else bad. Bad for a null `obj`
    // and, after the error, where there is no such executable. A wrong number of arguments that a
    // handler forgives is nil.
    objref call(std::string const &name);
    objref call(std::string const &name, objref const &a);
    objref call(std::string const &name, objref const &a, objref const &b);
    static objref call(cObj *obj, std::string const &name);
    static objref call(cObj *obj, std::string const &name, objref const &a);
    static objref call(cObj *obj, std::string const &name, objref const &a, objref const &b);

    // --- items. RUNS USER CODE

    bool append(objref const &item); // calls "append"; false for a null or bad item
    // Appends the pieces between the delimiters as strings, empty ones too; none after a last
    // delimiter. Failures are ignored.
    void append_dissection(std::string const &text, char delimiter);
    // getattr; with force a badfind becomes a new map, stored under the key. Bad if the map can't
    // be stored.
    [[nodiscard]] objref getattr_force(objref const &key, bool force);
    // Assigns into a good present value; a stored nil is one, which refuses: false. Else stores
    // value itself (not a clone, even with clone_new: the clone is made and dropped), or returns
    // false for a null or bad value and a void object.
    bool copyitem(objref const &key, objref const &value, bool clone_new);
    // Is `other`, the very object, anywhere below this one? Own members don't count. Ends on
    // cycles.   O(1) if `other` is known to be nobody's value, else linear in the values below;
    // each container is visited once
    bool is_owner_of(cObj const &other);
    // False: no attribute of any hash has this very object as its value. True also where that is
    // not known, as for all but maps, vectors and sets (core/cholders.h).   O(1)
    bool may_be_a_value() const noexcept {
        return class_ >= one_holder || !holders_known_ || object_class() != cObjClass::map;
    }

    // --- own members: a private map that exists only when there is something in it

    cAttrHash &ommap() { return *ommap_; } // has_ommap() must hold
    cAttrHash const &ommap() const { return *ommap_; }
    bool has_ommap() const noexcept { return ommap_.get() != nullptr; }
    cAttrHash *ommap_ptr() const noexcept { return ommap_.get(); } // borrowed; null without members
    hashref const &ommap_ref() const noexcept { return ommap_; }   // the same, to be shared
    // Replace the whole map, and fire the `changed` of the new one. RUNS USER CODE: what the old
    // map held is released. Executables in the new map are own methods only if set_omember has
    // stored one before (of_exe_member).
    void ommap(hashref const &hash); // shares, null removes; becomes its father if it has none
    void ommap(cMapObj const &map);  // shares the map's hash; the hash keeps its father
    // Clones the key, shares the value; a kill value removes. False for a void key and for
    // cat::bad(). An executable gets the key as its name and must be a cExeMember, or of a type
    // with tf_free_exe, and fit a standard method of that name: else it isn't stored (0x44000000,
    // 0x50000000), and the result is true if a handler forgives that. Fires `changed`, also when
    // nothing changed. RUNS USER CODE
    bool set_omember(objref const &key, objref value);
    bool set_omember(std::string const &key, objref value);
    [[nodiscard]] objref omember(objref const &key) const; // badfind if absent
    [[nodiscard]] objref omember(std::string const &key) const;
    // The member, if it is of exactly that type; else a new object of the type, or the example
    // itself (shared), stored over it. Bad or badfind for "niltype", for a bad example, and where
    // storing failed. RUNS USER CODE
    objref force_omember(objref const &key, cTypeObj const &type);
    objref force_omember(std::string const &key, cTypeObj const &type);
    objref force_omember(objref const &key, objref const &example);
    objref force_omember(std::string const &key, objref const &example);

    // --- members of any kind: own, then the type's, then global ones

    [[nodiscard]] objref gmember(objref const &key) const; // the first good one; else badfind
    [[nodiscard]] objref gmember(std::string const &key) const;
    // The stored reference itself, made as nil among the own members if the key is nowhere; valid
    // while its node lives. What is written to one of the type or of the global members changes for
    // everybody, without a check and without `changed`. For a key that can't be stored or is not
    // found again: a scratch reference, emptied at each such call.
    objref &gmember_(objref const &key);
    objref &gmember_(std::string const &key);

    // The own member "//". RUNS USER CODE False, with the text as it was, if the member is void or
    // doesn't convert to a string.
    bool get_comment(std::string &text) const;
    bool set_comment(std::string const &text, bool replace); // false if there is one already

    // True if dispatch looks into the own members (of_exe_member) and the method's name is there;
    // `exe`, borrowed, is then the entry, or null when the entry isn't an executable.
    bool own_method(method_id id, cExeObj *&exe) const;

    // --- cursors, slices, copying. RUNS USER CODE

    cIterObj begin(); // over iterobj(); an invalid cursor if the type has no iterator
    cIterObj end();   // the position after the last; asks for the iterator anew
    cIterObj begin() const;
    cIterObj end() const;
    // A new vector that shares the values at the positions from start up to start + count; what is
    // before 0 is left out. With a type only values of exactly that type, the others count as
    // positions. Never null, empty if there is nothing to iterate.
    [[nodiscard]] objref getslice(int start, int count, cTypeObj *type);
    // Copies source onto this container by three letters, one for each class of key: only here, in
    // both, only in source. The first lines of cobj_attrcopy.cpp list the letters; null is "".
    // Parts that hold themselves are copied once. False if source can't be iterated, if a step
    // other than an append failed, or where nesting has used up the stack (0x40000001).
    bool attrcopy(cObj const &source, char const *commands);

    // --- who wants to know of changes: the signal is the own member "changed"

    // Fires it, if it is there; the object may be destroyed by then. RUNS USER CODE
    void changed() const;
    cSignal *changed_signal() const; // borrowed from the member; null if there is none
    // Puts a signal in the place of any other member. Where it can't be stored: a scratch signal,
    // disconnected at each such call. RUNS USER CODE
    cSignal &force_changed_signal();

    // --- paths and reading. RUNS USER CODE

    // The value at keys between slashes, a/b/0. badfind where a key isn't found, null where the
    // last step returns it. A path that is wrong as text is bad, and a line reports it.
    [[nodiscard]] objref getattrp(std::string const &path);
    // One write of a shared value. The path may end in an operator:
    //   = or none  assigns to a good present value, else stores   +=  adds to the present value
    //   &=         stores; null removes                           <<  appends to the present value
    // With force, missing levels are made as maps (+= of anything but a map and << make none).
    // False if a step failed or there is no key. Errors in the path, code 0x40000001, go to
    // cat::errhandler() or the living cat::ReadReport; those of the operations as ever.
    bool setattrp(std::string const &path, objref const &value, bool force);
    // Any number of statements, "a/b = 1; list << 2", with values as in files. One that fails
    // doesn't stop the others; text that can't be cut into statements does. False if any failed.
    bool setattrp(std::string const &text, bool force);
    template <class T> // a value without force would be taken as force
    requires(std::is_convertible_v<T, cObj const *>) bool setattrp(std::string const &path,
                                                                   T const &value) = delete;
    // Reads one value as cAttrScan::scan_obj does: 0, and `result` is the value, without the parts
    // of a container that were reported as errors; -1 at a closing
    // bracket or the end; else a positive error code, reported, with `result` as it was. A null
    // `delim` isn't set; a null text is empty.
    static int readobj(std::istream &is, objref &result, int *delim = nullptr);
    static int readobj(char const *text, objref &result, int *delim = nullptr);

  protected:
    // Borrows the type; null as for cObj(false).
    explicit cObj(cTypeObj *type, cObjClass object_class = cObjClass::other) noexcept;
    inline cObj(cat::cBuiltinType type, cObjClass object_class) noexcept; // defined in cobjd.h
    // Before the value of an object is changed in place, or given out to be changed at any time:
    // the sets that find it by its value are notified.
    void before_change() const noexcept {
        if (index_ != 0 && index_ != index_given_out) [[unlikely]]
            leave_set_index();
    }
    void before_giving_out() const noexcept {
        before_change();
        index_ = index_given_out;
    }
    // For the destructor of that class: members released after it may still look at the object.
    void end_class() noexcept { class_ &= holds_type_bit; }

  private:
    cObj(cObj const &) = delete;
    // Merges source into this: attrcopy(source, "-xx"). Kept from callers: `a << b` with objects
    // reads like appending.
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
    void leave_ommap() noexcept; // as the father of a member map that others may go on sharing
    bool may_be_member(objref const &key, objref const &value, bool &refused);

    cTypeObj *type_;
    std::uint32_t obid_;
    // The cObjClass in the lower byte, above it holds_type_bit, and in the rest the attributes
    // whose value this is (core/cholders.h): one test asks for class and type.
    std::uint16_t class_;
    mutable std::uint16_t index_ = 0; // the set index that it is a part of (core/cset_index.h)
    static bool holders_known_;
    hashref ommap_;
};

// Temporary keys. make_key refers to the caller's text or number and must not outlive it; own_key
// holds a copy. Both are const and off the census.
[[nodiscard]] QRV_API objref make_key(std::string const &text);
[[nodiscard]] QRV_API objref make_key(int const &number);
[[nodiscard]] QRV_API objref own_key(std::string const &text);
[[nodiscard]] QRV_API objref own_key(int number);
