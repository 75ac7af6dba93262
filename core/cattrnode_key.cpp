// Keys without an object. A node that the library creates for a string or an int stores the text
// after itself, in the same memory, or has the int as its hash. The key object is created when a
// caller asks for it, and looks as if it had always existed: the node reserves its id, and the
// census counts it as long as the node has a key.
//
//   lazy_ --make_key()--> key_ --removal--> no key
//       `-----------------removal-----------^

#include "core/cattrhash_detail.h"
#include "core/cbuiltin.h"
#include "core/cholders.h"
#include "core/cregistry.h"

#include <cassert>
#include <cstring>

namespace {

// Longer strings would need a separate memory block anyway.
constexpr std::size_t longest_text = 100;
constexpr std::size_t word = 8;

constexpr std::size_t words_of(std::size_t bytes) { return (bytes + word - 1) / word; }
static_assert(longest_text <= 0xFF && words_of(cLazyKey::at_text + longest_text) <= 0xFF);

template <class Word> void copy_ends(unsigned char *to, std::string_view text) noexcept {
    Word begin, end;
    std::size_t const last = text.size() - sizeof(Word);
    std::memcpy(&begin, text.data(), sizeof(Word));
    std::memcpy(&end, text.data() + last, sizeof(Word));
    std::memcpy(to, &begin, sizeof(Word));
    std::memcpy(to + last, &end, sizeof(Word));
}

// Like same_text(): makes no call for most keys.
void copy_text(unsigned char *to, std::string_view text) noexcept {
    std::size_t const size = text.size();
    if (size >= 8 && size <= 16) return copy_ends<std::uint64_t>(to, text);
    if (size >= 4 && size < 8) return copy_ends<std::uint32_t>(to, text);
    std::memcpy(to, text.data(), size);
}

} // namespace

void cAttrNode::operator delete(cAttrNode *node, std::destroying_delete_t, std::size_t size) {
    size += word * node->room_;
    node->~cAttrNode();
    cPooled::operator delete(node, size);
}

inline cAttrNode::cAttrNode(objref const &value, std::size_t room, cKeyKind kind) noexcept
    : cHashNode(objref()), value_(value), anid_(an_lstid++), kind_(kind), lazy_(true),
      room_(static_cast<std::uint8_t>(room)) {
    cHolders::enter(value_);
}

inline void cAttrNode::reserve_key() noexcept {
    ++ob_count_;
    std::uint32_t const id = ++ob_lstid_;
    std::memcpy(cLazyKey::of(this), &id, sizeof id);
}

[[gnu::noinline]] cAttrNode *cAttrNode::node_of_long(std::string_view text, objref const &value) {
    objref key = cat::make_value(std::string(text));
    --ob_lstid_; // the key gets the node's reserved id
    return new cAttrNode(cAdopt(), std::move(key), objref(value));
}

// The caller sets the hash of the key, which is the number.
cAttrNode *cAttrNode::lazy_number(objref const &value) {
    constexpr std::size_t room = words_of(cLazyKey::at_length);
    void *const memory = cPooled::operator new(sizeof(cAttrNode) + word * room);
    auto *const node = new (memory) cAttrNode(value, room, cKeyKind::int_key);
    node->reserve_key();
    return node;
}

cAttrNode *cAttrNode::lazy_node(cKeyKind kind, std::string_view text, objref const &value) {
    assert(fits_index(kind));
    if (kind == cKeyKind::int_key) return lazy_number(value);
    if (text.size() > longest_text) [[unlikely]]
        return node_of_long(text, value);
    std::size_t const room = words_of(cLazyKey::at_text + text.size());
    void *const memory = cPooled::operator new(sizeof(cAttrNode) + word * room);
    auto *const node = new (memory) cAttrNode(value, room, kind);
    node->reserve_key();
    unsigned char *const place = cLazyKey::of(node);
    place[cLazyKey::at_length] = static_cast<unsigned char>(text.size());
    copy_text(place + cLazyKey::at_text, text);
    return node;
}

// A private copy, so that a caller who changes the key object can't damage the table. Strings and
// ints are copied without a call, with the same effect as clone().
cAttrNode *cAttrNode::with_key(objref const &key) {
    unsigned const create = cat::method_bit(mid_create);
    switch (cAttrHash::kind_of(key)) {
    case cKeyKind::string_key:
        if (!cat::is_builtin(*core.string, create)) break;
        return lazy_node(cKeyKind::string_key, text_of(key), cat::nil());
    case cKeyKind::int_key:
        if (!cat::is_builtin(*core.integer, create)) break;
        return lazy_node(cKeyKind::int_key, {}, cat::nil());
    default:
        break;
    }
    return new cAttrNode(key); // RUNS USER CODE
}

// A program may have changed the type of the key object since its insertion.
bool cAttrNode::has_key_of(cKeyKind kind) const noexcept {
    if (lazy_) return kind_ == kind;
    return key_ && cAttrHash::kind_of(key_) == kind;
}

std::optional<std::string_view> cAttrNode::key_string() const noexcept {
    if (!has_key_of(cKeyKind::string_key)) return std::nullopt;
    return key_text();
}

std::optional<int> cAttrNode::key_int() const noexcept {
    if (!has_key_of(cKeyKind::int_key)) return std::nullopt;
    return key_number();
}

void cAttrNode::make_key() const {
    objref key;
    if (kind_ == cKeyKind::int_key)
        key = make<cObjD<int>>(key_number(), cat::cBuiltinType{core.integer});
    else
        key = make<cObjD<std::string>>(std::string(key_text()), cat::cBuiltinType{core.string});
    --ob_lstid_; // the node has reserved the id
    --ob_count_;
    std::uint32_t id = 0;
    std::memcpy(&id, cLazyKey::of(this), sizeof id);
    key->obid(id);
    key_ = std::move(key);
    lazy_ = false;
}

cAttrNode::cTakenKey cAttrNode::take_key() noexcept {
    bool const lazy = lazy_;
    lazy_ = false;
    return {std::move(key_), lazy};
}
