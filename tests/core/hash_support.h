#pragma once
// What the tests of the attribute hash share: access to its private members, short texts of a whole
// ring, hostile keys, and values that run a function when they are destroyed.

#include "core/ctable_growth.h"
#include "qrv/core/cattrhash.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cobjd.h"
#include "tests/support/objects.h"

#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

// Accesses the private members of a hash.
struct cAttrHashProbe {
    // The hash, in the form with a table; creates the table if necessary.
    static cAttrHash &tabled(cAttrHash &hash) {
        if (hash.form_ != cHashForm::table) hash.make_table(first_size);
        return hash;
    }
    static cHashForm form(cAttrHash const &hash) { return hash.form_; }
    static cSlotWord &word(cAttrHash &hash, std::uint32_t i) { return tabled(hash).words_[i]; }
    static cSlotWord *slot(cAttrNode const *node) {
        return &word(*node->table_, slot_(const_cast<cAttrNode *>(node)));
    }
    static std::uint32_t &slot_(cAttrNode *node) {
        tabled(*node->table_);
        return node->slot_;
    }
    static cAttrHash *&table(cAttrNode *node) { return node->table_; }
    static std::uint32_t hash_of(cAttrNode const *node) { return node->hash_; }
    static std::uint32_t &hash_(cAttrNode *node) {
        tabled(*node->table_);
        return node->hash_;
    }
    static objref &key(cAttrNode *node) { return const_cast<objref &>(node->key()); }
    static bool &dead(cAttrNode *node) { return node->dead_; }
    static std::uint32_t &used(cAttrHash &hash) { return hash.used_; }
    static std::uint32_t &unused(cAttrHash &hash) { return tabled(hash).unused_; }
    static std::uint32_t &others(cAttrHash &hash) { return hash.others_; }
    static std::uint32_t &no_ints(cAttrHash &hash) { return hash.no_ints_; }
    static int &greatest(cAttrHash &hash) { return hash.greatest_; }
    static bool &is_vector(cAttrHash &hash) { return hash.is_vector_; }
    static bool &moved(cAttrHash &hash) { return hash.moved_; }
    static bool has_values(cAttrHash const &hash) { return hash.has_values_; }
    static cSlotWord &known_value(cAttrHash &hash, std::uint32_t i) {
        return hash.known_values()[i];
    }
    static bool seeded(cAttrHash const &hash) { return hash.seeded_; }
    static void unlink(cAttrHash &hash, cAttrNode *node) { hash.unlink_node(*node); }
    static void swap_links(cAttrNode *node) {
        cNode<cAttrNode> &link = *node;
        std::swap(link.next_, link.prev_);
    }
    static cAttrHash *copy(cAttrHash const &hash) { return new cAttrHash(hash); }
    static cAttrNode *copy(cAttrNode const &node) { return new cAttrNode(node); }
};

using test::val;

// A key or value in short: 5, "a", 1.5d, nil, null, or the type's name.
inline std::string short_text(objref const &ref) {
    if (!ref) return "null";
    if (ref == cat::nil()) return "nil";
    if (&ref->type() == &cat::type_int()) return std::to_string(val<int>(ref));
    if (&ref->type() == &cat::type_string()) return val<std::string>(ref);
    if (&ref->type() == &cat::type_double()) {
        std::string text = std::to_string(val<double>(ref));
        return text.substr(0, text.find('.') + 2) + "d";
    }
    return ref->type().name();
}

// The whole ring: "a=1 b=2 ".
inline std::string ring(cAttrHash const &hash) {
    std::string text;
    for (cAttrNode const *node = hash.first(); node; node = hash.next(node))
        text += short_text(node->key()) + "=" + short_text(node->valref()) + " ";
    return text;
}

// The same from the end.
inline std::string ring_backwards(cAttrHash const &hash) {
    std::string text;
    for (cAttrNode const *node = hash.last(); node; node = hash.prev(node))
        text += short_text(node->key()) + "=" + short_text(node->valref()) + " ";
    return text;
}

// A value that runs a function when it is destroyed.
class cOnDestroy : public cObj {
  public:
    explicit cOnDestroy(std::function<void()> action) : action_(std::move(action)) {}
    cOnDestroy(cOnDestroy const &) = delete;
    cOnDestroy &operator=(cOnDestroy const &) = delete;
    ~cOnDestroy() override { action_(); }

  private:
    std::function<void()> action_;
};
inline objref on_destroy(std::function<void()> action) {
    return objref::adopt(new cOnDestroy(std::move(action)));
}

// Keys that all collide. Their hooks count their calls, and run a function of the test once.
class cHostileType {
  public:
    static inline int hash_calls, heq_calls, clone_calls;
    static inline std::function<void()> in_hash, in_heq, in_clone;

    cHostileType() : type_(make<cTypeObj>("hostile", set_up)) { reset(); }
    cHostileType(cHostileType const &) = delete;
    cHostileType &operator=(cHostileType const &) = delete;
    ~cHostileType() { reset(); }

    static void reset() {
        hash_calls = heq_calls = clone_calls = 0;
        in_hash = in_heq = in_clone = nullptr;
    }
    objref key(int number) const { return objref::adopt(new cObjD<int>(number, type_.get())); }

  private:
    static void act(std::function<void()> &action) {
        if (auto const once = std::exchange(action, nullptr)) once();
    }
    static unsigned int hash(objref const &) {
        ++hash_calls;
        act(in_hash);
        return 7;
    }
    static bool heq(objref const &a, objref const &b) {
        ++heq_calls;
        bool const equal = &a->type() == &b->type() && val<int>(a) == val<int>(b);
        act(in_heq);
        return equal;
    }
    static objref newobj(objref type) {
        ++clone_calls;
        act(in_clone);
        return objref::adopt(new cObjD<int>(0, dynamic_cast<cTypeObj *>(type.get())));
    }
    static bool assign(cObj &obj, objref &source) {
        static_cast<cObjDR<int> &>(obj).val() = val<int>(source);
        return true;
    }
    static void set_up(cTypeObj &type) {
        type.set_hash(hash, heq);
        type.set_tmember("newobj", make<cExeMember>(newobj));
        type.set_tmember("assign", make<cExeMember>(assign));
    }

    typeref type_;
};

using cBlocks = std::pair<std::string, std::string>;

// Two blocks of two characters that take the text hash from `state` to the same state.
inline cBlocks colliding_blocks(std::uint32_t &state) {
    std::map<std::uint32_t, std::string> seen;
    for (unsigned char a = '0'; a <= 'z'; ++a)
        for (unsigned char b = '0'; b <= 'z'; ++b) {
            std::uint32_t const next = ((state * 31 ^ a) * 31) ^ b;
            std::string const block{static_cast<char>(a), static_cast<char>(b)};
            auto const [at, fresh] = seen.emplace(next, block);
            if (fresh) continue;
            state = next;
            return {at->second, block};
        }
    throw std::logic_error("no colliding blocks");
}

// The number-th of 2^17 texts that all have one hash: each bit chooses one of two blocks.
inline std::string colliding_text(unsigned int number) {
    static std::vector<cBlocks> const blocks = [] {
        std::vector<cBlocks> made;
        std::uint32_t state = 0;
        while (made.size() < 17) made.push_back(colliding_blocks(state));
        return made;
    }();
    std::string text;
    for (size_t bit = 0; bit < blocks.size(); ++bit)
        text += number >> bit & 1 ? blocks[bit].second : blocks[bit].first;
    return text;
}
