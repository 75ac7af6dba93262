#pragma once
// Insertion for callers that fill a hash from text or from another hash: the key's hash is computed
// once, the node takes the key object itself, and no user code runs. The effect on the hash is that
// of mapitem with the same key and value.

#include "core/cattrhash_detail.h"

struct cAttrInsert {
    struct cPlace {
        cAttrNode *node;
        bool is_new; // else the node was there before, and its value is as it was
    };

    // Needed by all others: no key of the hash has hooks of its own, and making a string or an int
    // runs no method of a program.
    static bool is_ready(cAttrHash const &hash) noexcept;

    // Values must be good and not executable.
    static cPlace text(cAttrHash &hash, std::string_view key, objref const &value);
    static cPlace number(cAttrHash &hash, int key, objref const &value);
    // Where a key belongs that is exactly a string or an int; valid as long as nothing happens to
    // the hash and to the key.
    class cKeyPlace {
      public:
        cKeyPlace(cAttrHash const &hash, objref const &key);
        bool is_new() const noexcept { return !found_.node; }

      private:
        friend struct cAttrInsert;
        cAttrHash::cSearch search_;
        cAttrHash::cFound found_;
    };
    // Nobody else holds the key. Key and value stay the caller's if the key was there before.
    static cPlace adopt(cAttrHash &hash, cKeyPlace const &place, objref &&key, objref &&value);
    static cPlace adopt(cAttrHash &hash, objref &&key, objref &&value) {
        return adopt(hash, cKeyPlace(hash, key), std::move(key), std::move(value));
    }
    static cPlace adopt(cAttrHash &hash, objref &&key, objref const &value) {
        return adopt(hash, std::move(key), objref(value));
    }
    // A text that is looked up often, with its hash.
    struct cKnownText {
        explicit cKnownText(std::string_view key) : text(key), hash(text_hash(key, false)) {}
        std::string_view text;
        std::uint32_t hash;
    };
    static cAttrNode *find(cAttrHash const &hash, cKnownText const &key);
    // Is it what find() would give? False also where that would have to be looked up.
    static bool is_found(cAttrNode const &node, cAttrHash const &hash,
                         cKnownText const &key) noexcept {
        return node.table_ == &hash && node.hash_ == key.hash &&
               node.kind_ == cKeyKind::string_key && same_text(node.key_text(), key.text);
    }

    // In the place of the node's value, whatever that is and its flags say; null and badfind are
    // stored too. RE-ENTERS if the old one ends.
    static void replace(cAttrNode &node, objref &&value) { node.set_value(std::move(value)); }

    // Where both values are scalars, which own nothing and so are not counted.
    static void swap_scalar(cAttrNode &node, objref &value) noexcept {
        node.before_replacing();
        if (node.table_) node.table_->note_value(node, value.get());
        node.value_.swap(value);
    }

    // A value is replaced through a reference that may be a node's.
    static void note_unseen() noexcept { ++cAttrHash::replaced_unseen_; }

    // As vect_append; false where the hash isn't ready, its keys aren't all ints, or the greatest
    // int is among them.
    static bool append(cAttrHash &hash, objref const &value);
    // core/cattrhash_copy.cpp: is the key exactly a string or an int; and does copy() have the
    // effect of mapitem for each node, that is, are all keys plain and all values good and not
    // executable?
    static bool has_plain_key(cAttrNode const &node) noexcept {
        return node.kind_ == cKeyKind::string_key || node.kind_ == cKeyKind::int_key;
    }
    // Is the key an int without an object so far? Then asking for it can be spared.
    static bool is_lazy_number(cAttrNode const &node) noexcept {
        return node.lazy_ && node.kind_ == cKeyKind::int_key;
    }
    static bool is_copyable(cAttrHash const &hash) noexcept; // O(n)
    // All nodes of a hash that is copyable into an empty one. Clones keys, shares values.
    static void copy(cAttrHash &to, cAttrHash const &from);

  private:
    static cAttrNode *copy_of(cAttrNode const &node);
    static std::unique_ptr<cAttrNode> make_node(cAttrHash::cSearch const &search,
                                                objref const &value);
    static cPlace insert(cAttrHash &hash, cAttrHash::cSearch const &search, objref const &value);
    static void link_last(cAttrHash &hash, cAttrNode &node, cAttrHash::cFound const &place);
    static cAttrNode &add(cAttrHash &hash, cAttrHash::cFound const &found,
                          cAttrHash::cSearch const &search, std::unique_ptr<cAttrNode> node);
};
