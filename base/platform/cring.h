#pragma once
// A base class with the links of objects that form a ring: struct cBlock : cRingLinks<cBlock>.

namespace cat::pool {

template <class T> struct cRingLinks {
    T *next, *prev;

    void link_alone() noexcept { next = prev = static_cast<T *>(this); }
    void link_after(T *place) noexcept {
        prev = place;
        next = place->next;
        next->prev = place->next = static_cast<T *>(this);
    }
    void link_before(T *place) noexcept { link_after(place->prev); }
    void unlink() noexcept {
        prev->next = next;
        next->prev = prev;
    }
};

} // namespace cat::pool
