#include "edit/csnapshot.h"

#include "qrv/containers/cattspec.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypeobj.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/write/cexacttext.h"
#include "qrv/text/write/cwriter.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <string_view>
#include <utility>

namespace qrv::edit {

namespace {

// The content of a number or a bool of the library's types.
template <class T> std::uint64_t bits_of(cObj const &value) {
    T const number = static_cast<cObjDR<T> const &>(value).val();
    std::uint64_t bits = 0;
    std::memcpy(&bits, &number, sizeof number);
    return bits;
}

std::optional<std::uint64_t> bits_of(cObj const &value) {
    cTypeObj const &type = value.type();
    if (&type == &cat::type_int()) return bits_of<int>(value);
    if (&type == &cat::type_double()) return bits_of<double>(value);
    if (&type == &cat::type_bool()) return bits_of<bool>(value);
    if (&type == &cat::type_float()) return bits_of<float>(value);
    return std::nullopt;
}

// The lowest bits of WasEntry::key are its form.
enum KeyForm : unsigned { number_key, text_key, object_key };
constexpr unsigned key_bits = 2;

std::string const *string_in(cObj const &value) {
    if (&value.type() != &cat::type_string()) return nullptr;
    return &static_cast<cObjDR<std::string> const &>(value).val();
}

} // namespace

cMapObj const *container_in(objref const &value) {
    if (!value) return nullptr;
    cTypeObj const &type = value->type();
    if (&type == &cat::type_map() || &type == &cat::type_vector() || &type == &cat::type_set())
        return static_cast<cMapObj const *>(value.get());
    if (bits_of(*value) || string_in(*value) || value->is_type() ||
        dynamic_cast<cAttspec const *>(value.get()))
        return nullptr;
    return dynamic_cast<cMapObj const *>(value.get());
}

bool is_list(cObj const &container) { return container.is_vector() || container.is_set(); }

std::string exact_text(objref const &value) {
    cat::ExactText const exact;
    return cat::as_text(value);
}

bool is_constant(objref const &value) { return value && cat::find_const(value.get()); }

Snapshot::Snapshot(objref const &root) : root_(entry_of(0, 0, root)) { add(root); }

void Snapshot::add_donor(objref const &root) {
    donor_ = root;
    add(root);
}

// Adds a tree. Containers that the donor shares with the target belong to the target.
void Snapshot::add(objref const &root) {
    if (!container_in(root) || !containers_.try_emplace(root.get()).second) return;
    std::vector<objref> todo{root};
    while (!todo.empty()) {
        objref const container = std::move(todo.back());
        todo.pop_back();
        std::vector<WasEntry> entries;
        cAttrHash const &hash = container_in(container)->datamap();
        entries.reserve(hash.used());
        for (cAttrNode const *node = hash.first(); node; node = hash.next(node)) {
            entries.push_back(entry_of(node->anid(), key_of(*node), node->valref()));
            if (entries.back().is_container() &&
                containers_.try_emplace(entries.back().value.get()).second)
                todo.push_back(entries.back().value);
        }
        for (WasEntry const &entry : entries) by_anid_.push_back(&entry);
        containers_[container.get()] = std::move(entries);
        if (donor_) donated_.insert(container.get());
    }
    std::sort(by_anid_.begin(), by_anid_.end(),
              [](WasEntry const *a, WasEntry const *b) { return a->anid < b->anid; });
}

// A key without an object is stored as a string or a number, which needs less memory than an
// object.
std::uint64_t Snapshot::key_of(cAttrNode const &node) {
    bool const is_bare = !node.has_key_object();
    if (auto const number = is_bare ? node.key_int() : std::nullopt)
        return std::uint64_t{static_cast<std::uint32_t>(*number)} << key_bits | number_key;
    auto const text = is_bare ? node.key_string() : std::nullopt;
    if (!text || text->find('\0') != std::string_view::npos) {
        keys_.push_back(node.key());
        return (keys_.size() - 1) << key_bits | object_key;
    }
    std::uint64_t const offset = contents_.size();
    contents_.append(*text).push_back('\0');
    return offset << key_bits | text_key;
}

objref Snapshot::key(WasEntry const &was) const {
    std::uint64_t const found = was.key >> key_bits;
    switch (was.key & ((1u << key_bits) - 1)) {
    case number_key:
        return own_key(static_cast<int>(found));
    case text_key:
        return own_key(std::string(contents_.c_str() + found));
    default:
        return keys_[found];
    }
}

WasEntry Snapshot::entry_of(std::uint32_t anid, std::uint64_t key, objref const &value) {
    WasEntry entry{anid, 0, key, value, 0};
    if (!value) return entry;
    if (container_in(value)) {
        entry.size = WasEntry::container;
    } else if (auto const bits = bits_of(*value)) {
        entry.content = *bits;
    } else {
        entry.content = contents_.size();
        std::string const *const string = string_in(*value);
        contents_ += string ? *string : exact_text(value); // RUNS USER CODE
        entry.size = static_cast<std::uint32_t>(contents_.size() - entry.content);
    }
    return entry;
}

std::vector<WasEntry> const *Snapshot::entries(cObj const *container) const {
    auto const found = containers_.find(container);
    return found == containers_.end() ? nullptr : &found->second;
}

WasEntry const *Snapshot::entry(std::uint32_t anid) const {
    auto const found = std::lower_bound(
        by_anid_.begin(), by_anid_.end(), anid,
        [](WasEntry const *entry, std::uint32_t wanted) { return entry->anid < wanted; });
    return found != by_anid_.end() && (*found)->anid == anid ? *found : nullptr;
}

objref const &Snapshot::value(std::uint32_t anid) const {
    static objref const none;
    WasEntry const *const found = entry(anid);
    return found ? found->value : none;
}

bool Snapshot::is_still(WasEntry const &was, objref const &value) const {
    if (!was.value || !value || was.is_container()) return was.value == value;
    if (&was.value->type() != &value->type()) return false;
    if (was.value != value && (is_constant(was.value) || is_constant(value))) return false;
    if (auto const bits = bits_of(*value)) return *bits == was.content;
    std::string_view const content = std::string_view(contents_).substr(was.content, was.size);
    std::string const *const string = string_in(*value);
    return content == (string ? *string : exact_text(value)); // RUNS USER CODE
}

bool Snapshot::is_still(std::vector<WasEntry> const &was, cMapObj const &container) const {
    cAttrHash const &hash = container.datamap();
    if (was.size() != hash.used()) return false;
    cAttrNode const *node = hash.first();
    return std::all_of(was.begin(), was.end(), [&](WasEntry const &entry) {
        cAttrNode const &now = *std::exchange(node, hash.next(node));
        return now.anid() == entry.anid && now.valref() == entry.value &&
               is_still(entry, entry.value);
    });
}

bool Snapshot::changed(objref const &root) const {
    return !is_still(root_, root) ||
           std::any_of(containers_.begin(), containers_.end(), [this](auto const &container) {
               auto const &[object, entries] = container;
               return !is_still(entries, *dynamic_cast<cMapObj const *>(object));
           });
}

std::unordered_set<std::uint32_t> Snapshot::in_changed() const {
    std::unordered_set<cObj const *> changed;
    std::unordered_set<std::uint32_t> anids;
    for (auto const &[container, entries] : containers_) {
        if (is_still(entries, *dynamic_cast<cMapObj const *>(container))) continue;
        changed.insert(container);
        for (WasEntry const &entry : entries) anids.insert(entry.anid);
    }
    for (size_t size = 0; size < changed.size();) { // adds the containers around them
        size = changed.size();
        for (auto const &[container, entries] : containers_)
            for (WasEntry const &entry : entries)
                if (changed.contains(entry.value.get())) {
                    changed.insert(container);
                    anids.insert(entry.anid);
                }
    }
    return anids;
}

} // namespace qrv::edit
