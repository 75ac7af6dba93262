#pragma once
// Choice types that a test creates, and the positions of their values.

#include "qrv/base/csignal.h"
#include "qrv/containers/cattr.h"
#include "qrv/containers/cchoiceval.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cmodifier.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"

#include <functional>
#include <initializer_list>
#include <string>

namespace choice_test {

using valueref = cRef<cChoiceVal>;
using mapref = cRef<cMapObj>;

inline objref text(char const *of) { return own_key(std::string(of)); }

// Returns {a: 1, b: 2, c: 3} for "a", "b", "c".
inline mapref map_of(std::initializer_list<char const *> keys) {
    auto map = make<cMapObj>();
    int n = 0;
    for (char const *key : keys) map->setattr(text(key), cat::of(++n));
    return map;
}

inline typeref choice_type(char const *name, objref const &choices) {
    auto type = make<cTypeObj>(&cat::typetype_choice(), name, nullptr);
    if (choices) type->setattr(text("choices"), choices);
    return type;
}

inline typeref choice_type(std::initializer_list<char const *> keys) {
    return choice_type("Letter", map_of(keys));
}

// Created by newobj, so it follows.
inline valueref value_of(typeref const &type) {
    objref const made = type->newobj();
    return valueref::share(dynamic_cast<cChoiceVal *>(made.get()));
}

inline valueref value_at(typeref const &type, char const *key) {
    valueref value = value_of(type);
    value->setkey(key);
    return value;
}

// The key, "undefined" at the end position, "lost" without a position.
inline std::string place(cIterObj const &it) {
    if (it.valid()) return it.key_as_string();
    return !it.node() ? "lost" : "undefined";
}
inline std::string place(valueref const &value) { return place(*value); }

// The action of a slot or a member.
class cAction {
  public:
    explicit cAction(std::function<void()> action, cSignal const *signal = nullptr)
        : action_(std::move(action)), slot_(this, &cAction::run) {
        if (signal) signal->connect(slot_);
    }
    cAction(cAction const &) = delete;
    cAction &operator=(cAction const &) = delete;
    ~cAction() = default;

  private:
    void run() { action_(); }

    std::function<void()> action_;
    cSlot<cAction> slot_;
};

// A map whose iterobj runs an action at its first call.
class cActingMap : public cMapObj {
  public:
    cActingMap() : cActingMap(made_type()) {}
    explicit cActingMap(cMapObj const &map) : cActingMap() { datamap() = map.datamap(); }
    cActingMap(cActingMap const &) = delete;
    cActingMap &operator=(cActingMap const &) = delete;
    ~cActingMap() override = default;

    std::function<void()> action;

  private:
    explicit cActingMap(typeref const &type) : cMapObj(type.get(), false), own_type_(type) {}

    static typeref made_type() {
        auto type = make<cTypeObj>("ActingMap");
        type->inherit(cat::type_map());
        type->setflags(tf_container);
        type->set_tmember("iterobj", make<cExeMember>(&iterobj));
        return type;
    }
    static objref iterobj(objref obj) {
        auto *const map = dynamic_cast<cActingMap *>(obj.get());
        if (!map) return cat::bad();
        if (std::function<void()> const once = std::exchange(map->action, nullptr)) once();
        return cTomMap::iterobj(obj);
    }

    typeref const own_type_;
};

} // namespace choice_test
