// Destroys objects. A destructor releases other objects, which may be destroyed in turn, and so on:
// a chain of any length must not exhaust the stack. Up to max_depth destructors nest, in their
// natural order. Objects released deeper wait in a list, which the outermost release empties.

#include "core/cregistry.h"
#include "qrv/core/cobjd.h"

#include <algorithm>
#include <memory>
#include <vector>

namespace {

constexpr int max_depth = 1000;

constinit int depth = 0;
constinit std::vector<cObj *> *waiting = nullptr; // exists only while objects wait

struct cDepthStep {
    cDepthStep() noexcept { ++depth; }
    ~cDepthStep() { --depth; }
    cDepthStep(cDepthStep const &) = delete;
    cDepthStep &operator=(cDepthStep const &) = delete;
};

void kill(cObj *target) {
    target->incref(); // a destructor may share its object; releasing that must not destroy it again
    delete target;    // RE-ENTERS: may add to the list
}

void wait(cObj *target) {
    if (!waiting) waiting = new std::vector<cObj *>;
    waiting->push_back(target);
}

void drain() {
    while (waiting && !waiting->empty()) {
        cObj *const target = waiting->back();
        waiting->pop_back();
        kill(target);
    }
    delete std::exchange(waiting, nullptr);
}

} // namespace

void cRefTraits<cObj>::addref(cObj const *target) noexcept { target->incref(); }

bool cRefTraits<cObj>::release(cObj const *target) noexcept { return target->decref(); }

namespace {

// A type that counts its objects is destroyed by the last of them.
bool has_objects(cObj const &target) noexcept {
    auto const *const type = dynamic_cast<cTypeObj const *>(&target);
    return type && type->objects() != 0;
}

} // namespace

void cRefTraits<cObj>::destroy(cObj *target) {
    if (target->is_type() && has_objects(*target)) return;
    if (depth >= max_depth) return wait(target);
    cDepthStep const step;
    kill(target);
    if (depth == 1) drain();
}

namespace {

template <class T> bool is_exactly(cObj const &obj) noexcept { return &typeid(obj) == &typeid(T); }

} // namespace

bool cat::is_library_class(cObj const &obj) noexcept {
    if (obj.holds_type()) return false; // may be the type's last object; types can be of any class
    switch (obj.object_class()) {
    case cObjClass::string:
        return is_exactly<cObjD<std::string>>(obj);
    case cObjClass::integer:
        return is_exactly<cObjD<int>>(obj);
    case cObjClass::float_number:
        return is_exactly<cObjD<float>>(obj);
    case cObjClass::double_number:
        return is_exactly<cObjD<double>>(obj);
    case cObjClass::boolean:
        return is_exactly<cObjD<bool>>(obj);
    case cObjClass::map:
        return std::ranges::find(core.map_classes, &typeid(obj)) != std::end(core.map_classes);
    case cObjClass::executable:
    case cObjClass::other:
        break;
    }
    return false;
}

namespace {

// Does the work of the destructors for exactly this class without members. Takes 60 instead of 120
// instructions for the key and the value of an entry.
template <class T> bool destroy_exactly(cObj *target) noexcept {
    if (!is_exactly<cObjD<T>>(*target)) return false;
    target->obid(0);
    std::destroy_at(static_cast<cObjD<T> const *>(target)->valptr());
    cObjD<T>::operator delete(target, sizeof(cObjD<T>));
    return true;
}

} // namespace

bool cat::destroy_scalar(cObj *target) {
    if (target->has_ommap() || depth >= max_depth) return false;
    switch (target->class_) { // matches no case if the object holds its type
    case int(cObjClass::string):
        return destroy_exactly<std::string>(target);
    case int(cObjClass::integer):
        return destroy_exactly<int>(target);
    case int(cObjClass::float_number):
        return destroy_exactly<float>(target);
    case int(cObjClass::double_number):
        return destroy_exactly<double>(target);
    case int(cObjClass::boolean):
        return destroy_exactly<bool>(target);
    default:
        return false;
    }
}
