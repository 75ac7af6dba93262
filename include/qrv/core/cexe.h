#pragma once
// Executables: functions stored as objects, as standard methods of types, members of objects, or
// global members. There are seven prototypes, in the list below. A function is stored in a generic
// form with the tag of its prototype and is called only with its actual type. A call with other
// arguments reports an error:
//   0x44000000 "Executable, key '...', called with bad prototype"

#include "qrv/core/ctypeobj.h"

using cFunction0 = objref (*)();
using cFunction1 = objref (*)(objref);
using cFunction2 = objref (*)(objref, objref);
using cFunction3 = objref (*)(objref, objref, objref);
using cProcedure1 = bool (*)(cObj &);
using cProcedure2 = bool (*)(cObj &, objref &);
using cProcedure3 = bool (*)(cObj &, objref &, objref &);

//        type         arguments  procedure
#define QRV_PROTOTYPES(X)                                                                          \
    X(cFunction0, 0, false)                                                                        \
    X(cFunction1, 1, false)                                                                        \
    X(cFunction2, 2, false)                                                                        \
    X(cFunction3, 3, false)                                                                        \
    X(cProcedure1, 1, true)                                                                        \
    X(cProcedure2, 2, true)                                                                        \
    X(cProcedure3, 3, true)

enum class cExeProto : unsigned char {
#define QRV_PROTO(type, c, p) of_##type,
    QRV_PROTOTYPES(QRV_PROTO)
#undef QRV_PROTO
};

// The base of all executables. Every call reports a bad prototype; a subclass implements those that
// it supports.
class QRV_API cExeObj : public cObj {
  public:
    ~cExeObj() override;
    cExeObj(cExeObj const &) = delete;
    cExeObj &operator=(cExeObj const &) = delete;

    // Calls; the caller must keep the executable and the objects alive. RUNS USER CODE
    virtual objref oexecute(objref a, objref b, objref c) const;
    virtual objref oexecute(objref a, objref b) const;
    virtual objref oexecute(objref a) const;
    virtual objref oexecute() const;
    virtual bool pexecute(cObj &a, objref &b, objref &c) const;
    virtual bool pexecute(cObj &a, objref &b) const;
    virtual bool pexecute(cObj &a) const;
    // Whether this executable may be stored under its name in `owner` (borrowed, may be null).
    virtual bool validate_exe(cObj *owner) const;

    // Number of arguments, including a leading object.
    unsigned int c() const noexcept { return c_; }
    bool s() const noexcept { return s_; } // whether the first argument is the object
    bool p() const noexcept { return p_; } // whether it is a procedure: bool (cObj &, ...)
    std::string const &name() const noexcept { return name_; } // the key; set by the map
    void set_name(std::string const &name) { name_ = name; }

    objref bad() const; // reports the error; nil if a handler forgives it, else bad
    bool bbad() const;  // the same; true if a handler forgives it

  protected:
    cExeObj(unsigned int c, bool s, bool p, cTypeObj *type = nullptr); // null: cat::type_exe()

  private:
    unsigned int c_;
    bool s_;
    bool p_;
    std::string name_;
};

class QRV_API cExeFunction : public cExeObj {
  public:
#define QRV_PROTO(type, c, p) cExeFunction(type f, bool s);
    QRV_PROTOTYPES(QRV_PROTO)
#undef QRV_PROTO
    ~cExeFunction() override;
    cExeFunction(cExeFunction const &) = delete;
    cExeFunction &operator=(cExeFunction const &) = delete;

    objref oexecute(objref a, objref b, objref c) const override;
    objref oexecute(objref a, objref b) const override;
    objref oexecute(objref a) const override;
    objref oexecute() const override;
    bool pexecute(cObj &a, objref &b, objref &c) const override;
    bool pexecute(cObj &a, objref &b) const override;
    bool pexecute(cObj &a) const override;
    bool validate_exe(cObj *owner) const override;

    // The function in its generic form; null if constructed from null.
    void *fpt() const noexcept;
    cVoidFunction function() const noexcept { return function_; }
    cExeProto proto() const noexcept { return proto_; }

  private:
    cVoidFunction function_;
    cExeProto proto_;
};

// A function that is not a member: s is false.
class QRV_API cExeGlobal : public cExeFunction {
  public:
#define QRV_PROTO(type, c, p)                                                                      \
    explicit cExeGlobal(type f) : cExeFunction(f, false) {}
    QRV_PROTOTYPES(QRV_PROTO)
#undef QRV_PROTO
    ~cExeGlobal() override;
    cExeGlobal(cExeGlobal const &) = delete;
    cExeGlobal &operator=(cExeGlobal const &) = delete;
};

// A member function: s is true, the first argument is the object.
class QRV_API cExeMember : public cExeFunction {
  public:
#define QRV_PROTO(type, c, p)                                                                      \
    explicit cExeMember(type f) : cExeFunction(f, true) {}
    QRV_PROTOTYPES(QRV_PROTO)
#undef QRV_PROTO
    ~cExeMember() override;
    cExeMember(cExeMember const &) = delete;
    cExeMember &operator=(cExeMember const &) = delete;
};

namespace cat {
// Calls of global members (cat::gmmap()); the same results as cObj::call. Errors 0x44000000. The
// last two look one up; badfind if it does not exist. RUNS USER CODE
QRV_API objref call(std::string const &name);
QRV_API objref call(std::string const &name, objref const &a);
QRV_API objref call(std::string const &name, objref const &a, objref const &b);
QRV_API objref gmember(objref const &key);
QRV_API objref gmember(std::string const &key);
} // namespace cat
