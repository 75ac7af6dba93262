#pragma once
// Insertion for callers that fill a hash from text or from another hash. It computes the key's hash
// once, moves the key object into the node, and runs no user code. The effect on the hash is the
// same as mapitem with this key and value.

#include "core/cattrhash_detail.h"

struct cAttrInsert {
    struct cPlace {
        cAttrNode *node;
        bool is_new; // if false, the node existed before and its value is unchanged
    };

    // Precondition of text, number and adopt: no key of the hash has its own hooks, and creating a
    // string or an int runs no user code.
    static bool is_ready(cAttrHash const &hash) noexcept;

    // Values must be good and not executable.
    static cPlace text(cAttrHash &hash, std::string_view key, objref const &value);
    static cPlace number(cAttrHash &hash, int key, objref const &value);
    // The place of a key that is exactly a string or int; valid until the hash or the key changes.
    class cKeyPlace {
      public:
        cKeyPlace(cAttrHash const &hash, objref const &key);
        bool is_new() const noexcept { return !found_.node; }

      private:
        friend struct cAttrInsert;
        cAttrHash::cSearch search_;
        cAttrHash::cFound found_;
    };
    // The key must have no other owner. If the hash already has the key, the caller keeps key and
    // value.
    static cPlace adopt(cAttrHash &hash, cKeyPlace const &place, objref &&key, objref &&value);
    static cPlace adopt(cAttrHash &hash, objref &&key, objref &&value) {
        return adopt(hash, cKeyPlace(hash, key), std::move(key), std::move(value));
    }
    static cPlace adopt(cAttrHash &hash, objref &&key, objref const &value) {
        return adopt(hash, std::move(key), objref(value));
    }
    // A string that is looked up often, and its hash.
    struct cKnownText {
        explicit cKnownText(std::string_view key) : text(key), hash(text_hash(key, false)) {}
        std::string_view text;
        std::uint32_t hash;
    };
    static cAttrNode *find(cAttrHash const &hash, cKnownText const &key);
    // Is this node what find() returns? Also false if only a search can decide.
    static bool is_found(cAttrNode const &node, cAttrHash const &hash,
                         cKnownText const &key) noexcept {
        return node.table_ == &hash && node.hash_ == key.hash &&
               node.kind_ == cKeyKind::string_key && same_text(node.key_text(), key.text);
    }

    // Replaces the node's value without any tests of type and flags; stores null and badfind too.
    // RE-ENTERS if the old value is destroyed.
    static void replace(cAttrNode &node, objref &&value) { node.set_value(std::move(value)); }

    // Both values must be scalars: they own nothing, so holders are not counted.
    static void swap_scalar(cAttrNode &node, objref &value) noexcept {
        node.before_replacing();
        if (node.table_) node.table_->note_value(node, value.get());
        node.value_.swap(value);
    }

    // Call when a value is replaced through a reference that may be a node's.
    static void note_unseen() noexcept { ++cAttrHash::replaced_unseen_; }

    // Like vect_append. Fails if the hash isn't ready, if a key isn't an int, or if a key is the
    // greatest int.
    static bool append(cAttrHash &hash, objref const &value);
    // Is the key exactly a string or an int?
    static bool has_plain_key(cAttrNode const &node) noexcept {
        return node.kind_ == cKeyKind::string_key || node.kind_ == cKeyKind::int_key;
    }
    // Is the key an int that has no object yet? Then the caller can avoid creating one.
    static bool is_lazy_number(cAttrNode const &node) noexcept {
        return node.lazy_ && node.kind_ == cKeyKind::int_key;
    }
    // Does copy() have the same effect as mapitem for each node? It does if the hash is ready, all
    // keys are plain, and all values are good and not executable.   O(n)
    static bool is_copyable(cAttrHash const &hash) noexcept;
    // Copies all nodes of a copyable hash into an empty one. Clones keys, shares values.
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
