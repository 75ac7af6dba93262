#pragma once
// cObj, the universal value: a counted object that knows its type, carries an id and, when asked
// to, a private map of members. It holds no value itself; its subclasses do.
//
// Nearly no behaviour is virtual. A generic operation first looks for an executable among the
// object's own members (only if the object has of_exe_member), and else makes one indexed call
// through the method table of the type. So marked operations RUN FOREIGN CODE.
//
// Failures are composed on eros(), sent through cat::sig_error() and told by the result: a good
// result of kind objref is none of null, cat::bad(), cat::badfind(). Exceptions are only what a
// handler of that signal makes of an error. A null object reaches the state tests and call() by
// their static forms, to which a cRef converts.

#include "qrv/core/cindex.h"
#include "qrv/core/cobjbase.h"

#include <string>

namespace cat {
QRV_API cTypeObj &type_nil();
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

class QRV_API cObj : public cObjBase {
  public:
    // With true the type is "niltype", with false null until set_type: needed before types exist.
    // All operations on an object without a type answer as for one of "niltype".
    explicit cObj(bool typed = true);
    template <class T>
    requires(!std::is_same_v<T, bool> && !std::is_class_v<T>) explicit cObj(T) = delete;
    ~cObj() override;

    // True only for cObjDR<T>, which refers to a value that lives elsewhere.
    virtual bool is_ObjDR() const;

    // Identity and type. obid 0 means: not in the census.
    unsigned int obid() const noexcept { return obid_; }
    void obid(unsigned int id) noexcept; // 0 takes the object off the census, once
    static void obid(cObj *obj, unsigned int id) noexcept;
    // cat::type_nil() for an object without a type.
    cTypeObj &type() const noexcept { return type_ ? *type_ : cat::type_nil(); }
    void set_type(cTypeObj *type) noexcept { type_ = type; } // borrows; no check, no signal
    int typeflags_of(int bits) const noexcept;

    // States: relations to the type and to the sentinels. A null pointer is void, bad and kill,
    // and none of nil, map, set, vector. An object without a type is void.
    bool is_void() const noexcept { return is_void(this); }
    bool is_nil() const noexcept { return is_nil(this); }
    bool is_bad() const noexcept { return is_bad(this); }
    bool is_kill() const noexcept { return is_kill(this); }
    bool is_map() const noexcept { return is_map(this); }
    bool is_set() const noexcept { return is_set(this); }
    bool is_vector() const noexcept { return is_vector(this); }
    bool is_good() const noexcept { return is_good(this); }
    static bool is_void(cObj const *obj) noexcept;
    static bool is_nil(cObj const *obj) noexcept;
    static bool is_bad(cObj const *obj) noexcept;
    static bool is_kill(cObj const *obj) noexcept;
    static bool is_map(cObj const *obj) noexcept;
    static bool is_set(cObj const *obj) noexcept;
    static bool is_vector(cObj const *obj) noexcept;
    static bool is_good(cObj const *obj) noexcept { return !is_bad(obj); }
    bool is_exe() const noexcept { return typeflags_of(tf_exe) != 0; }
    bool is_container() const noexcept { return typeflags_of(tf_container) != 0; }
    bool is_type() const noexcept { return flags_of(of_type) != 0; }

    // The operators: one named operation each. A subclass that declares none of its own inherits
    // assignment as assign() followed by memberwise copying; declare it to be sure.
    cObj &operator=(cObj const &source);
    cObj &operator+=(cObj const &source);
    cObj &operator<<(objref const &item);
    bool operator==(cObj const &other) const { return equal(other); }
    bool operator!=(cObj const &other) const { return !equal(other); }
    bool operator<(cObj const &other) const { return less(other); }
    objref operator/(objref const &key);
    objref operator/(std::string const &key);
    objref operator/(char const *key);
    objref operator/(int key);
    objref operator/(double) = delete;
    objref operator/(bool) = delete;
    cAttr operator[](objref const &key); // handles: containers/cattr.h
    cAttr operator[](std::string const &key);
    cAttr operator[](char const *key); // a null text makes a handle that reads bad
    cAttr operator[](int key);
    // std::out_of_range for what an int can't hold.
    template <cOtherIndex T> cAttr operator[](T key);
    template <cCharacter T> cAttr operator[](T) = delete;
    cAttr operator[](double) = delete;
    cAttr operator[](bool) = delete;

    // Generic operations; all RUN FOREIGN CODE.
    void create();
    static void create(cObj *obj);
    [[nodiscard]] objref newref();
    bool assign(cObj const &source); // false if this is void; true, unchanged, if source is void
    bool assign(objref const &source);
    bool add(cObj const &source);
    bool add(objref const &source);
    bool setattr(objref const &key, objref const &value);
    [[nodiscard]] objref getattr(objref const &key);
    [[nodiscard]] objref getattr(objref const &key) const;
    bool write(std::ostream &os) const;
    bool read(std::istream &is);
    bool equal(cObj const &other) const; // objects of different types are unequal
    bool equal(objref const &other) const;
    bool less(cObj const &other) const; // objects of different types go by their types' names
    [[nodiscard]] objref iterobj();

    // The object inside a larger text: "#name" of a constant, or name(...) around write().
    bool writeobj(std::ostream &os) const;
    bool is_writable() const;
    // Writes "#" and the key when this very object is a value of cat::constmap().
    bool write_constname(std::ostream &os) const;

    // Takes the value of source by the type's converter; false if there is none. No error text.
    bool convert(objref const &source);
    // A new object of the same type, as deep as the type's assign; bad on failure. Exceptions
    // become bad, or go on with rethrow.
    [[nodiscard]] objref clone(bool rethrow = false) const;

    // Calls by name: own members, type members, global members.   code 0x44000000
    objref call(std::string const &name);
    objref call(std::string const &name, objref const &a);
    objref call(std::string const &name, objref const &a, objref const &b);
    static objref call(cObj *obj, std::string const &name);
    static objref call(cObj *obj, std::string const &name, objref const &a);
    static objref call(cObj *obj, std::string const &name, objref const &a, objref const &b);

    // Members: cobj_member.cpp.
    bool append(objref const &item);
    // Appends the pieces between the delimiters as strings; none behind a last delimiter.
    void append_dissection(std::string const &text, char delimiter);
    [[nodiscard]] objref getattr_force(objref const &key, bool force);
    // Assigns into a good present value, else stores value itself (not a clone, even with
    // clone_new: the clone is made and dropped).
    bool copyitem(objref const &key, objref const &value, bool clone_new);
    // True when other stands anywhere below this object, by identity. Ends on cycles.
    bool is_owner_of(cObj const &other);
    cAttrHash &ommap() { return *ommap_; } // has_ommap() must hold
    cAttrHash const &ommap() const { return *ommap_; }
    bool has_ommap() const noexcept { return ommap_.get() != nullptr; }
    cAttrHash *ommap_ptr() const noexcept { return ommap_.get(); }
    hashref const &ommap_ref() const noexcept { return ommap_; }
    void ommap(hashref const &hash); // shares; becomes its father if it has none
    void ommap(cMapObj const &map);  // shares the map's hash; the hash keeps its father
    bool set_omember(objref const &key, objref value); // null or badfind removes
    bool set_omember(std::string const &key, objref value);
    [[nodiscard]] objref omember(objref const &key) const;
    [[nodiscard]] objref omember(std::string const &key) const;
    objref force_omember(objref const &key, cTypeObj const &type);
    objref force_omember(std::string const &key, cTypeObj const &type);
    objref force_omember(objref const &key, objref const &example);
    objref force_omember(std::string const &key, objref const &example);
    [[nodiscard]] objref gmember(objref const &key) const;
    [[nodiscard]] objref gmember(std::string const &key) const;
    // The stored reference itself, made as nil among the own members if the key is nowhere. For a
    // key that can't be stored or is not found again: a scratch reference, emptied at each such
    // call.
    objref &gmember_(objref const &key);
    objref &gmember_(std::string const &key);
    bool get_comment(std::string &text) const;
    bool set_comment(std::string const &text, bool replace);

    // The entry of an own method; exe is null when the entry is no executable.
    bool own_method(method_id id, cExeObj *&exe) const;

    // Cursors, slices, copying: containers/.
    cIterObj begin();
    cIterObj end();
    cIterObj begin() const;
    cIterObj end() const;
    [[nodiscard]] objref getslice(int start, int count, cTypeObj *type);
    // Copies source onto this container by three letters: see cobj_attrcopy.cpp.
    bool attrcopy(cObj const &source, char const *commands);

    // Who wants to know of changes: the signal is the own member "changed", made when asked for.
    void changed() const;            // fires it, if it is there. RUNS FOREIGN CODE
    cSignal *changed_signal() const; // borrowed from the member; null if there is none
    cSignal &force_changed_signal(); // puts a signal in the place of any other member

    // Paths and reading: text/.
    [[nodiscard]] objref getattrp(std::string const &path);
    // One write of a shared value. The path may end in an operator:
    //   = or none  assigns to a good present value, else stores   +=  adds to what stands there
    //   &=         stores; null removes                           <<  appends to what stands there
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
    static int readobj(std::istream &is, objref &result, int *delim = nullptr);
    static int readobj(char const *text, objref &result, int *delim = nullptr);

  protected:
    explicit cObj(cTypeObj *type) noexcept; // borrows the type

  private:
    cObj(cObj const &) = delete;
    // Merges source into this: attrcopy(source, "-xx"). Kept from callers: `a << b` with objects
    // reads like appending.
    cObj &operator<<(cObj const &source);

    void leave_ommap() noexcept; // as the father of a member map that others may go on sharing
    bool may_be_member(objref const &key, objref const &value, bool &refused);

    cTypeObj *type_;
    std::uint32_t obid_;
    hashref ommap_;
};

// Temporary keys. make_key refers to the caller's text or number and must not outlive it; own_key
// holds a copy. Both are const and off the census.
[[nodiscard]] QRV_API objref make_key(std::string const &text);
[[nodiscard]] QRV_API objref make_key(int const &number);
[[nodiscard]] QRV_API objref own_key(std::string const &text);
[[nodiscard]] QRV_API objref own_key(int number);
