#pragma once
// Counting: cShared is the intrusive count, cRef the smart pointer that moves it, cRefTraits the
// policy that tells a cRef how to count and destroy its target.
//
// Four words say in every interface comment what becomes of a pointer:
//   adopt   takes your count over      share   adds one
//   borrow  plain pointer, dies with its owner
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

// The intrusive count. A fresh object is owned once, by whoever made it.
class QRV_API cShared {
  public:
    cShared() noexcept = default;
    cShared(cShared const &) noexcept {}                           // a copy starts with 1
    cShared &operator=(cShared const &) noexcept { return *this; } // the count stays
    ~cShared() = default;

    void incref() const noexcept { ++count_; }
    // True when the caller has just dropped the last count; destroying is then the caller's affair.
    [[nodiscard]] bool decref() const noexcept { return count_-- == 1; }
    unsigned int refs() const noexcept { return count_; }

  private:
    mutable std::uint32_t count_ = 1;
};

// The policy for a T derived from cShared: destruction is `delete`, which is the virtual
// destructor where T has one. A dying target counts one owner, as one on the stack does: so its
// destructor may hand it out for a while without destroying it twice. Specialised where destroying
// needs more.
template <class T> class cRefTraits {
  public:
    static void addref(T const *target) noexcept { target->incref(); }
    [[nodiscard]] static bool release(T const *target) noexcept { return target->decref(); }
    static void destroy(T *target);
};

// Objects: as above, but a chain of last owners of any length is destroyed in bounded stack.
template <> class QRV_API cRefTraits<cObj> {
  public:
    static void addref(cObj const *target) noexcept;
    [[nodiscard]] static bool release(cObj const *target) noexcept;
    static void destroy(cObj *target);
};

// Handles that name a class derived from cObj destroy as objref does.
template <class T> void cRefTraits<T>::destroy(T *target) {
    if constexpr (std::is_base_of_v<cObj, T>) {
        cRefTraits<cObj>::destroy(const_cast<std::remove_const_t<T> *>(target));
    } else {
        target->incref();
        delete target;
    }
}

// A handle, one pointer wide; null is a legal value that every operation tolerates but `*` and
// `->`. There is no constructor from a plain pointer: say adopt or share.
template <class T, class Traits> class cRef {
    struct cNoDelete;

  public:
    using element_type = T;

    constexpr cRef() noexcept = default;
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
    // Adds a count to something that lives already.
    [[nodiscard]] static cRef share(T *target) noexcept {
        add(target);
        return adopt(target);
    }

    // Null from now on; the count is the caller's, who may hand it to adopt.
    [[nodiscard]] T *release() noexcept { return std::exchange(p_, nullptr); }

    // The old target is released last: its destructor, which may be foreign code, may look at
    // this very cRef, and finds the new value in it.
    cRef &operator=(cRef const &other) {
        if (p_ != other.p_) {
            cRef const keep = std::move(*this);
            p_ = other.p_;
            add(p_);
        }
        return *this; // RE-ENTERS: keep dies here
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

    T *get() const noexcept { return p_; }
    T &operator*() const noexcept { return *p_; }
    T *operator->() const noexcept { return p_; }
    operator T *() const noexcept { return p_; }
    explicit operator bool() const noexcept { return p_ != nullptr; }
    void swap(cRef &other) noexcept { std::swap(p_, other.p_); }

    // These would be the pointer's: arithmetic, an address on a stream, a count torn down.
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

// A total order by identity: by address, so not the same in every run. Null comes first.
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

// By identity too.
namespace std {
template <class T, class A> struct hash<cRef<T, A>> {
    std::size_t operator()(cRef<T, A> const &ref) const noexcept {
        return std::hash<T *>{}(ref.get());
    }
};
} // namespace std

// Would print an address: write the object with cObj::writeobj, or its text with cat::as_text.
template <class Stream, class T, class A>
requires requires(Stream &os) { os.rdbuf(); }
void operator<<(Stream &os, cRef<T, A> const &ref) = delete;

// A new T, adopted.
template <class T, class... Args> [[nodiscard]] cRef<T> make(Args &&...args) {
    return cRef<T>::adopt(new T(std::forward<Args>(args)...));
}
