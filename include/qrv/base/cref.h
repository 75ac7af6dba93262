#pragma once
// Counting: cShared is the intrusive count, cRef the smart pointer that changes it, cRefTraits the
// policy by which a cRef counts and destroys its target.
//
// Four words in every interface comment say what becomes of a pointer:
//   adopt   takes over your count      share   adds one count
//   borrow  plain pointer, valid while its owner lives
//   clone   private copy
//
// There are no weak references, and a cycle of cRefs is never freed.

#include "qrv/qrvdefs.h"

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <type_traits>
#include <utility>

// The intrusive count. A new object has one owner: its creator.
class QRV_API cShared {
  public:
    cShared() noexcept = default;
    cShared(cShared const &) noexcept {}                           // a copy starts with 1
    cShared &operator=(cShared const &) noexcept { return *this; } // the count stays
    ~cShared() = default;

    void incref() const noexcept { ++count_; }
    // True if this was the last count; the caller must then destroy the object.
    [[nodiscard]] bool decref() const noexcept { return count_-- == 1; }
    unsigned int refs() const noexcept { return count_; }

  private:
    mutable std::uint32_t count_ = 1;
};

// The policy for a T derived from cShared: destruction is `delete`, which uses the virtual
// destructor if T has one. While the destructor runs, the count is 1, as for an object on the
// stack: so temporary cRefs that the destructor creates do not destroy the object again.
// Specialised for types whose destruction needs more.
template <class T> class cRefTraits {
  public:
    // None of these accepts null. release() is true if it removed the last count: then call
    // destroy().
    static void addref(T const *target) noexcept { target->incref(); }
    [[nodiscard]] static bool release(T const *target) noexcept { return target->decref(); }
    static void destroy(T *target);
};

// For cObj: as above, but the use of the stack is bounded, even if each object of a long chain is
// the last owner of the next.
template <> class QRV_API cRefTraits<cObj> {
  public:
    // None of these accepts null.
    static void addref(cObj const *target) noexcept;
    [[nodiscard]] static bool release(cObj const *target) noexcept;
    static void destroy(cObj *target);
};

// Handles of classes derived from cObj destroy as objref does.
template <class T> void cRefTraits<T>::destroy(T *target) {
    if constexpr (std::is_base_of_v<cObj, T>) {
        cRefTraits<cObj>::destroy(const_cast<std::remove_const_t<T> *>(target));
    } else {
        target->incref();
        delete target;
    }
}

// A handle, one pointer wide. Null is a valid value for every operation except `*` and `->`. A
// plain pointer does not convert: use adopt or share.
template <class T, class Traits> class cRef {
    struct cNoDelete;

  public:
    using element_type = T;

    constexpr cRef() noexcept = default;
    // Shares the target of a copied handle; a moved handle becomes null.
    constexpr cRef(std::nullptr_t) noexcept {}
    cRef(cRef const &other) noexcept : p_(other.p_) { add(p_); }
    cRef(cRef &&other) noexcept : p_(std::exchange(other.p_, nullptr)) {}
    template <class U, class V>
    requires(std::is_convertible_v<U *, T *> && !std::is_same_v<U, T>) cRef(cRef<U, V> const &other)
    noexcept : p_(other.get()) { add(p_); }
    template <class U, class V>
    requires(std::is_convertible_v<U *, T *> && !std::is_same_v<U, T>) cRef(cRef<U, V> &&other)
    noexcept : p_(other.release()) {}
    ~cRef() { drop(); }

    // Takes over the count of a fresh object, or of any count that the caller owns.
    [[nodiscard]] static cRef adopt(T *target) noexcept {
        cRef ref;
        ref.p_ = target;
        return ref;
    }
    // Adds a count to an existing object.
    [[nodiscard]] static cRef share(T *target) noexcept {
        add(target);
        return adopt(target);
    }

    // Becomes null; the caller owns the count and may pass it to adopt.
    [[nodiscard]] T *release() noexcept { return std::exchange(p_, nullptr); }

    // Releases the old target last: its destructor, which may be user code, may read this cRef and
    // finds the new value in it.
    cRef &operator=(cRef const &other) {
        if (p_ != other.p_) {
            cRef const keep = std::move(*this);
            p_ = other.p_;
            add(p_);
        }
        return *this; // RE-ENTERS: keep is destroyed here
    }
    cRef &operator=(cRef &&other) noexcept(false) {
        if (this != &other) {
            cRef const keep = std::move(*this);
            p_ = std::exchange(other.p_, nullptr);
        }
        return *this; // RE-ENTERS
    }
    cRef &operator=(std::nullptr_t) {
        drop();
        return *this; // RE-ENTERS
    }

    // The target, borrowed; null for a null handle. `*` and `->` require a target.
    T *get() const noexcept { return p_; }
    T &operator*() const noexcept { return *p_; }
    T *operator->() const noexcept { return p_; }
    operator T *() const noexcept { return p_; }
    explicit operator bool() const noexcept { return p_ != nullptr; }
    void swap(cRef &other) noexcept { std::swap(p_, other.p_); }

    // The conversion to a pointer would allow pointer arithmetic, printing an address, and `delete`
    // without regard to the count. These declarations turn each of them into an error.
    operator cNoDelete *() const = delete;
    template <class K> void operator[](K const &) const = delete;
    template <class V> void operator<<(V const &) const = delete;

  private:
    static void add(T *target) noexcept {
        if (target) Traits::addref(target);
    }
    void drop() {
        T *const target = std::exchange(p_, nullptr); // null before the destructor runs
        if (target && Traits::release(target)) Traits::destroy(target);
    }

    T *p_ = nullptr;
};

// By identity, that is by address.
template <class T, class A, class U, class B>
bool operator==(cRef<T, A> const &a, cRef<U, B> const &b) noexcept {
    return a.get() == b.get();
}
template <class T, class A, class U> bool operator==(cRef<T, A> const &a, U *b) noexcept {
    return a.get() == b;
}
template <class T, class A> bool operator==(cRef<T, A> const &a, std::nullptr_t) noexcept {
    return a.get() == nullptr;
}

// A total order by address, so it differs between runs. Null comes first.
template <class T, class A, class U, class B>
requires std::three_way_comparable_with<T *, U *> std::strong_ordering
operator<=>(cRef<T, A> const &a, cRef<U, B> const &b) noexcept {
    return std::compare_three_way{}(a.get(), b.get());
}
template <class T, class A, class U>
requires std::three_way_comparable_with<T *, U *> std::strong_ordering
operator<=>(cRef<T, A> const &a, U *b) noexcept {
    return std::compare_three_way{}(a.get(), b);
}

// By identity, like the comparison.
namespace std {
template <class T, class A> struct hash<cRef<T, A>> {
    std::size_t operator()(cRef<T, A> const &ref) const noexcept {
        return std::hash<T *>{}(ref.get());
    }
};
} // namespace std

// Deleted, since it would print an address: use cObj::writeobj, or cat::as_text for a string.
template <class Stream, class T, class A>
requires requires(Stream &os) { os.rdbuf(); }
void operator<<(Stream &os, cRef<T, A> const &ref) = delete;

// A new T, adopted.
template <class T, class... Args> [[nodiscard]] cRef<T> make(Args &&...args) {
    return cRef<T>::adopt(new T(std::forward<Args>(args)...));
}
