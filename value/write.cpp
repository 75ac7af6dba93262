// Changing values.

#include "value/write.h"

#include "value/guard.h"
#include "value/notify.h"

#include "qrv/containers/cvectorobj.h"
#include "qrv/core/ctypeobj.h"
#include "qrv/core/ctypes.h"
#include "qrv/value/items.h"

#include <limits>
#include <optional>
#include <set>

namespace qrv {

value &value::lasting() {
    if (is_nil()) refuse_type(nullptr, {}, "a container");
    return *this;
}

void value::set(std::string_view path, value const &x) & {
    detail::write_at(object_, detail::path_reader(path), value(x));
}

void value::set(std::string_view path, value const &x) && {
    detail::step first;
    if (!detail::path_reader(path).next(first))
        throw path_error({}, "only a variable can be replaced: assign() changes the value itself");
    lasting().set(path, x);
}

void value::set_key(detail::step const &key, value const &x) {
    detail::write_at(object_, detail::one_key(key), value(x));
}

bool value::erase(std::string_view path) {
    return detail::remove_at(object_, detail::path_reader(path));
}

bool value::erase_key(detail::step const &key) {
    return detail::remove_at(object_, detail::one_key(key));
}

bool value::push_back(value const &x) & {
    if (is_nil()) {
        value made(objref(::make<cVectorObj>()));
        made.push_back(x);
        *this = std::move(made);
        return true;
    }
    if (!is_vector() && !is_set()) refuse_type(object_, {}, "a vector or a set");
    objref const owner = object_;
    return detail::append_value(owner, x);
}

namespace {

// The position of the first item equal to x; empty if no item is equal.
std::optional<int> item_of(value const &list, value const &x) {
    if (!list.is_nil() && !list.is_vector() && !list.is_set())
        throw type_error({}, "a vector or a set", detail::description(list));
    int position = 0;
    for (value const &item : list) {
        if (item == x) return position;
        ++position;
    }
    return std::nullopt;
}

} // namespace

bool value::contains_item(value const &x) const { return item_of(*this, x).has_value(); }

bool value::erase_item(value const &x) {
    std::optional<int> const position = item_of(*this, x);
    return position && erase(*position);
}

void value::insert(std::size_t position, value const &x) {
    if (!is_vector()) refuse_type(object_, {}, "a vector");
    if (position > size())
        throw path_error(std::to_string(position), "the vector ends at " + std::to_string(size()));
    objref const owner = object_;
    detail::insert_value(owner, static_cast<int>(position), x);
}

void value::clear() {
    if (!is_map() && !is_vector() && !is_set())
        refuse_type(object_, {}, "a map, a vector or a set");
    objref const owner = object_;
    if (owner->flags_of(of_const_keys)) throw error("the keys of the value are const");
    if (empty()) return;
    detail::change_report report(owner);
    cat::as_map(owner)->clear();
    report.fire();
}

void value::rename(std::string_view key, std::string_view new_key) {
    if (!is_map()) refuse_type(object_, {}, "a map");
    objref const owner = object_;
    if (!contains(key)) at_key(detail::step(key)); // throws
    if (key == new_key) return;
    if (contains(new_key))
        throw std::invalid_argument("there is an entry '" + std::string(new_key) + "' already");
    if (owner->flags_of(of_const_keys)) throw error("the keys of the value are const");
    detail::change_report report(owner);
    cat::as_map(owner)->datamap().rename(own_key(std::string(key)), own_key(std::string(new_key)));
    report.fire();
}

namespace {

// Merges pairs of containers, each pair once: parts may be shared, or contain themselves.
class merger {
  public:
    void merge(value target, value const &source) {
        detail::refuse_depth();
        if (!pairs_.emplace(target.object().get(), source.object().get()).second) return;
        bool const appends = target.is_vector() || target.is_set();
        for (auto const &[key, item] : source.items()) {
            if (appends)
                target.push_back(item);
            else
                put(target, key, item);
        }
    }

  private:
    void put(value &target, value const &key, value const &item) {
        std::optional<value> const present = target.find(key);
        if (present && mergeable(*present, item))
            merge(*present, item);
        else
            target.set(key, item);
    }
    static bool mergeable(value const &a, value const &b) {
        return a.is_container() && a.kind() == b.kind() && a.type_name() == b.type_name();
    }

    std::set<std::pair<cObj const *, cObj const *>> pairs_;
};

} // namespace

void value::merge(value const &other) & {
    if (other.is_nil()) return;
    if (is_nil()) {
        *this = other.clone();
        return;
    }
    if (!is_container()) refuse_type(object_, {}, "a container");
    if (!other.is_container()) refuse_type(other.object_, {}, "a container");
    if (is_shared_with(other)) return;
    merger().merge(*this, other);
}

namespace {

// The built-in type of the object's number or truth; null for other objects.
cTypeObj *scalar_type(cObj const &object) {
    switch (object.object_class()) {
    case cObjClass::boolean:
        return &cat::type_bool();
    case cObjClass::integer:
        return &cat::type_int();
    case cObjClass::float_number:
        return &cat::type_float();
    case cObjClass::double_number:
        return &cat::type_double();
    default:
        return nullptr;
    }
}

// The library's own conversions would truncate numbers that do not fit; get() throws instead.
void refuse_loss(cObj const &object, value const &x) {
    cTypeObj const *const type = scalar_type(object);
    cTypeObj &source = x.object()->type();
    auto const conversion = type ? type->converter(source) : nullptr;
    if (!conversion || object.type().converter(source) != conversion) return;
    if (type == &cat::type_bool())
        static_cast<void>(x.get<bool>());
    else if (type == &cat::type_int())
        static_cast<void>(x.get<int>());
    else if (type == &cat::type_float())
        static_cast<void>(x.get<float>());
    else
        static_cast<void>(x.get<double>());
}

using entries = std::vector<std::pair<objref, objref>>;

entries entries_of(value const &container) {
    entries result;
    for (auto const &[key, item] : container.items())
        result.emplace_back(key.object(), item.object());
    return result;
}

// Stores the entries in an empty map, vector or set; a set accepts equal values once.
void fill(value const &container, entries const &from) {
    objref const owner = container.object();
    auto const store = [&](objref const &key, objref const &item) {
        return container.is_map() ? owner->setattr(key, item) : owner->append(item);
    };
    for (auto const &entry : from)
        if (!detail::guarded([&] { return store(entry.first, entry.second); }) &&
            !container.is_set())
            throw type_error({}, "what " + container.type_name() + " accepts",
                             detail::description(value(entry.second)));
}

// If the container refuses an entry, nothing is changed.
void replace_entries(value const &container, value const &x) {
    entries const former = entries_of(container), present = entries_of(x);
    cMapObj &map = *cat::as_map(container.object());
    map.clear();
    try {
        fill(container, present);
    } catch (...) {
        map.clear();
        fill(container, former);
        throw;
    }
}

} // namespace

void value::assign(value const &x) {
    if (is_nil()) throw type_error("nil has no object that could change", 0);
    if (x.is_nil()) refuse_type(nullptr, {}, object_->type().name().c_str());
    if (is_shared_with(x)) return;
    objref const owner = object_;
    detail::refuse_cycle(owner, x);
    if ((is_vector() || is_set()) && x.is_container() && !x.is_vector() && !x.is_set())
        refuse_type(x.object_, {}, "a vector or a set"); // the keys would be lost
    refuse_loss(*owner, x);
    detail::change_report report(owner);
    bool const has_entries = is_map() || is_vector() || is_set();
    if (has_entries && x.is_container() &&
        detail::uses_library_method(*owner, mid_assign, of_const | of_const_keys))
        replace_entries(value(owner), x);
    else if (detail::is_choice_type(owner->type()))
        detail::assign_choice(*owner, x.object_);
    else if (!detail::guarded([&] { return owner->assign(x.object_); }))
        refuse_type(x.object_, {}, owner->type().name().c_str());
    report.fire();
}

} // namespace qrv
