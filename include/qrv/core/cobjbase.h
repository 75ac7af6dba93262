#pragma once
// The common base of objects and hash nodes: a count, a virtual destructor and a word of flags; and
// the census of existing objects.

#include "qrv/base/cref.h"
#include "qrv/base/platform/cpooled.h"

#include <iosfwd>

// Flags of objects and of type objects are in one word. Bits 0 to 7 belong to the subclass.
enum cObjFlag : int {
    of_const = 0x00000100,      // object: refuses assign and add
    of_const_keys = 0x00000200, // object: a container refuses new keys
    of_type = 0x00000400,       // object: is a cTypeObj
    tf_exe = 0x00001000,        // type: its objects are executables
    tf_free_exe = 0x00002000,   // type: its executables may be members without being cExeMember
    tf_container = 0x00004000,  // type: its objects are containers
    tf_bare = 0x00008000,       // type: written without "name(" and ")"
    of_exe_member = 0x00010000  // object: dispatch looks into its members first
};

class QRV_API cObjBase : public cShared, public cPooled {
  public:
    cObjBase(cObjBase const &other) noexcept : cShared(other), flags_(other.flags_) {}
    cObjBase &operator=(cObjBase const &other) noexcept { // only the flags
        flags_ = other.flags_;
        return *this;
    }
    virtual ~cObjBase();

    // flags(word) replaces the word; the next two change only these bits.
    int flags() const noexcept { return flags_; }
    void flags(int word) noexcept { flags_ = word; }
    void setflags(int bits) noexcept { flags_ |= bits; }
    void unsetflags(int bits) noexcept { flags_ &= ~bits; }
    int flags_of(int bits) const noexcept { return flags_ & bits; }

    // Writes the census: the last id, the number of counted objects, and the number of types.
    static void put_count(std::ostream &os);
    static std::uint32_t ob_count() noexcept { return ob_count_; }
    static std::uint32_t ob_lstid() noexcept { return ob_lstid_; }

  protected:
    cObjBase() noexcept = default;

    static std::uint32_t ob_lstid_; // the last object id; only increases
    static std::uint32_t ob_count_; // existing objects that are counted
    static std::uint32_t an_lstid;  // the next serial number of a hash node

  private:
    int flags_ = 0;
};
