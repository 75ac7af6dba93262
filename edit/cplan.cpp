#include "edit/cplan.h"

// settle() decides how an item is written. Items are settled in the order of the new text, so a
// shared value is written at the first of its places in the tree; the items at the other places are
// references to that path. The reader follows a path only through values that are written on the
// path itself, not through other references. The parents of an item always are such values.
//
// A donor's node is written once, even if the donor's text repeats its key. The same applies to the
// nodes that were passed to Entries::write_once().

#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/read/cattrscan.h"
#include "qrv/text/write/cwriter.h"

#include <algorithm>

namespace qrv::edit {

namespace {

// Can the container be written entry by entry? Not if its type is a program's, since that may use
// other brackets.
bool has_known_brackets(cObj const &container) {
    return container.is_map() || is_list(container) || container.type().tmember("attspec");
}

// Marks the elements of a longest increasing subsequence.
std::vector<bool> rising(std::vector<size_t> const &numbers) {
    std::vector<size_t> last; // for each length, where the best subsequence so far ends
    std::vector<size_t> before(numbers.size(), none);
    for (size_t i = 0; i < numbers.size(); ++i) {
        auto const at = std::lower_bound(last.begin(), last.end(), numbers[i],
                                         [&](size_t a, size_t b) { return numbers[a] < b; });
        if (at != last.begin()) before[i] = *(at - 1);
        if (at == last.end())
            last.push_back(i);
        else
            *at = i;
    }
    std::vector<bool> in_row(numbers.size());
    for (size_t i = last.empty() ? none : last.back(); i != none; i = before[i]) in_row[i] = true;
    return in_row;
}

} // namespace

Plan::Plan(std::string_view text, Entries const &entries, Snapshot const &before,
           objref const &root)
    : text_(text), entries_(entries), before_(before), root_(root),
      matching_(before, root, !entries.any_reference() && !entries.any_repeated()) {
    settle(add(nullptr, {0, nullptr, 0, false, none}, root));
}

std::string Plan::path(Item const &item) {
    if (!item.parent) return "";
    bool const list = is_list(*item.parent->value);
    return path(*item.parent) + '/' +
           (list ? std::to_string(item.position) : exact_text(item.node->key()));
}

Item &Plan::add(Item *parent, Slot const &slot, objref const &value) {
    Item &item = items_.emplace_back();
    item.parent = parent;
    item.depth = parent ? parent->depth + 1 : 0;
    item.node = slot.node;
    item.value = value;
    item.position = slot.position;
    item.old = slot.old;
    item.moved = slot.moved;
    item.donated = slot.donated;
    if (!parent) return item;
    // In a path into a set, the reader counts all values of the text, also repeated ones.
    if (parent->value->is_set()) {
        item.position = parent->children.size();
        in_sets_.emplace(item.node, &item);
    }
    parent->children.push_back(&item);
    return item;
}

void Plan::settle(Item &item) {
    objref const was = item.old == none ? objref()
                       : item.old == 0  ? root_
                                        : before_.value(entries_.anid(item.old));
    bool const in_place = item.old != none && !entries_.entry(item.old).reference &&
                          matching_.continues(item.value, was);
    if (item.old != none && !item.moved && is_merged(item, in_place)) {
        item.source = item.old;
        item.how = Item::as_it_was;
        return;
    }
    if (in_place && container_in(item.value) && matching_.is_left_out(item.value)) {
        item.source = item.old;
        item.how = Item::as_it_was;
        return;
    }
    bool const shared = matching_.places(item.value) > 1 && !is_constant(item.value);
    if ((shared || container_in(item.value)) && settle_shared(item, in_place)) return;
    if (in_place && has_its_text(item))
        settle_here(item);
    else
        settle_from_elsewhere(item, was);
    if (item.node) passed_.insert(item.node);
}

// Does the former entry have the text of the value? If its node is written once, a later entry of
// the text may have set or changed the value; then only that entry has the text.
bool Plan::has_its_text(Item const &item) {
    if (!entries_.is_once(item.old)) return true;
    bool const written_here = !entries_.any_repeated() || is_constant(item.value) ||
                              definitions(item.value).back() == item.old;
    if (!container_in(item.value)) return written_here;
    return is_block_of(item.old, item.value) && (written_here || entries_.is_donated(item.old));
}

// Do the brackets of this entry contain entries of this container? If the key is repeated, they may
// belong to an earlier value of another kind.
bool Plan::is_block_of(size_t number, objref const &container) const {
    cat::SourceEntry const frame = entries_.frame(number);
    if (frame.open.empty()) return false;
    if (entries_.is_once(number) && has_lost_entries(number)) return false;
    char const bracket = text_[frame.open.begin];
    return container->is_map()      ? bracket == '{' || bracket == '('
           : container->is_vector() ? bracket == '[' || bracket == '('
           : container->is_set()    ? bracket == '<' || bracket == '('
                                    : true;
}

// Do the brackets of this entry contain entries that have no node in the tree?
bool Plan::has_lost_entries(size_t number) const {
    std::vector<cat::SourceEntry> const parts = entries_.inside(number);
    return std::any_of(parts.begin(), parts.end(), [&](cat::SourceEntry const &part) {
        return entries_.anid(part.number) == 0;
    });
}

// Does the text of the former entry stay, since it is one of several for a repeated key? That is so
// if a later entry sets the value, or if a reference merges entries into it. A new map or set is
// written at the last entry. The reader would merge entries of earlier text into it, so earlier
// text stays only if it has no entries.
bool Plan::is_merged(Item const &item, bool in_place) const {
    if (!item.node || item.parent->value->is_set() || !entries_.is_repeated(item.old)) return false;
    if (entries_.is_once(item.old)) return false;
    if (!container_in(item.value)) return entries_.of(entries_.anid(item.old)).back() != item.old;
    if (in_place) return !is_block_of(item.old, item.value);
    if (!matching_.continues(item.value, before_.value(entries_.anid(item.old))))
        return entries_.of(entries_.anid(item.old)).back() != item.old &&
               (cObj::is_vector(item.value) || entries_.inside(item.old).empty());
    return entries_.entry(item.old).reference;
}

// Makes the item a reference if its value is already written elsewhere. False if it must be written
// here.
bool Plan::settle_shared(Item &item, bool in_place) {
    auto const [known, fresh] = written_.emplace(item.value.get(), &item);
    if (fresh) return false;
    bool const one_more_block = in_place && !item.moved && entries_.is_repeated(item.old);
    if (one_more_block && !entries_.is_once(item.old)) return false;
    bool const refers = item.old != none && entries_.entry(item.old).reference;
    item.how = Item::reference;
    item.target = known->second;
    if (refers && path_holds(item.old, item.value)) {
        item.how = Item::as_it_was;
        item.source = item.old;
    }
    if (item.node) passed_.insert(item.node);
    return true;
}

void Plan::settle_here(Item &item) {
    item.source = item.old;
    item.how = Item::as_it_was;
    if (container_in(item.value)) {
        item.how = Item::block;
        bool const one = item.moved || entries_.is_once(item.old) || !entries_.any_repeated();
        return add_children(item, one ? std::vector<size_t>{item.old} : definitions(item.value));
    }
    bool const last = item.old == 0 || item.parent->value->is_set() ||
                      entries_.of(entries_.anid(item.old)).back() == item.old;
    WasEntry const *const was = was_of(item.old);
    if (last && was && !before_.is_still(*was, item.value)) item.how = Item::literal;
}

void Plan::settle_from_elsewhere(Item &item, objref const &was) {
    if (is_constant(item.value) && item.value == was && path_holds(item.old, item.value)) {
        item.source = item.old;
        item.how = Item::as_it_was;
        return;
    }
    std::vector<size_t> const &found = definitions(item.value);
    if (found.empty() && was == item.value && was && !is_constant(was) && reads_as(item.old, was)) {
        item.source = item.old;
        item.how = Item::as_it_was;
        return;
    }
    item.source = found.empty() ? none : found.back();
    if (container_in(item.value)) {
        if (arranged_.count(item.source)) item.source = none; // another copy is written there
        item.how = item.source == none ? Item::fresh : Item::block;
        if (item.how == Item::block) return add_children(item, {item.source});
        if (item.depth >= cat::max_read_depth) {
            item.how = Item::absent;
            return;
        }
        if (has_known_brackets(*item.value)) return add_fresh_children(item);
        item.how = Item::literal;
        return;
    }
    bool const donated = entries_.is_donated(item.source) && !entries_.is_donated(item.old) &&
                         !is_constant(item.value);
    if ((item.source == none || donated) && was && &was->type() == &item.value->type() &&
        !entries_.entry(item.old).reference)
        item.source = item.old; // the new value may be equal to the old one
    bool const same =
        item.source != none && (is_constant(item.value) || is_constant(was)
                                    ? item.value == was
                                    : before_.is_still(*was_of(item.source), item.value));
    item.how = same ? Item::as_it_was : Item::literal;
}

// The entry as it was before the change; null if it has no node in the tree.
WasEntry const *Plan::was_of(size_t number) const {
    return number == 0 ? &before_.root() : before_.entry(entries_.anid(number));
}

// The entries that had the text of the value before the change, in file order.
std::vector<size_t> const &Plan::definitions(objref const &value) {
    if (!std::exchange(searched_, true)) search_definitions();
    if (auto const *const was = matching_.replaced_by(value)) return definitions(*was);
    auto const [known, fresh] = definitions_.try_emplace(value.get());
    if (!fresh || is_constant(value)) return known->second;
    auto at = std::lower_bound(all_definitions_.begin(), all_definitions_.end(),
                               std::pair(static_cast<cObj const *>(value.get()), size_t{0}));
    for (; at != all_definitions_.end() && at->first == value.get(); ++at)
        known->second.push_back(at->second);
    return known->second;
}

// Does this entry have the text of the value? If the key is repeated, the last entry has it; if a
// value of a set is repeated, the first one. The text of a container can be in several entries.
bool Plan::writes(size_t number, objref const &value) const {
    if (!entries_.is_repeated(number)) return true;
    size_t const parent = entries_.entry(number).parent;
    objref const &holder = parent == 0                  ? root_
                           : parent == entries_.donor() ? before_.donor()
                                                        : before_.value(entries_.anid(parent));
    std::vector<size_t> const all = entries_.of(entries_.anid(number));
    if (holder && holder->is_set()) return all.front() == number;
    return container_in(value) ? is_block_of(number, value) : all.back() == number;
}

// The entry that represents a node: its first one, or its last one if the node was moved. For a
// donor's node, the entry with the text.
size_t Plan::entry_of(WasEntry const &was, bool moved) const {
    std::vector<size_t> const numbers = entries_.of(was.anid);
    if (numbers.empty()) return none;
    if (!entries_.is_donated(numbers.front())) return moved ? numbers.back() : numbers.front();
    auto const text = std::find_if(numbers.rbegin(), numbers.rend(),
                                   [&](size_t number) { return writes(number, was.value); });
    return text == numbers.rend() ? numbers.back() : *text;
}

// Is this entry omitted, since its node is written once, at another entry?
bool Plan::is_left_out(size_t number) const {
    std::uint32_t const anid = entries_.anid(number);
    if (!anid || !entries_.is_once(number) || !entries_.is_repeated(number)) return false;
    WasEntry const *const was = before_.entry(anid);
    return was && entry_of(*was, entries_.is_donated(number)) != number;
}

void Plan::search_definitions() {
    all_definitions_.reserve(entries_.size() + 1);
    all_definitions_.emplace_back(root_.get(), 0);
    if (before_.donor() && !entries_.frame(entries_.donor()).open.empty())
        all_definitions_.emplace_back(before_.donor().get(), entries_.donor());
    for (size_t number = 1; number < entries_.size(); ++number) {
        objref const &value = before_.value(entries_.anid(number));
        if (!value || entries_.entry(number).reference) continue;
        if (writes(number, value)) all_definitions_.emplace_back(value.get(), number);
    }
    std::sort(all_definitions_.begin(), all_definitions_.end());
}

void Plan::add_children(Item &item, std::vector<size_t> const &blocks) {
    if (!arranged_.count(item.source)) arrange(*container_in(item.value), blocks);
    Slots const slots = std::move(arranged_[item.source]);
    for (Slot const &slot : slots)
        if (!add_repeated(item, slot)) settle(add(&item, slot, slot.node->valref()));
    if (item.how == Item::block && !is_list(*item.value)) number(item);
}

// Finds the children without a key that need one now. Inside a map, the reader gives the keys 0, 1
// and so on to maps without a key.
void Plan::number(Item &block) const {
    int next = 0;
    for (Item *const child : block.children) {
        if (child->is_new() || !entries_.entry(child->old).key.empty()) continue;
        objref const &key = child->node->key();
        child->needs_key = !cObj::is_map(child->value) || &key->type() != &cat::type_int() ||
                           cat::as_index(key) != next;
        if (!child->needs_key) ++next;
    }
}

// Adds an item for a repeated value of a set, if its text can stay. Such a value has no effect; but
// if its first occurrence has changed, its text would add a value, and is omitted. False if the
// slot is not such a value.
bool Plan::add_repeated(Item &item, Slot const &slot) {
    if (!item.value->is_set() || slot.moved || !entries_.is_repeated(slot.old)) return false;
    auto const first = in_sets_.find(slot.node);
    if (first == in_sets_.end()) return false;
    if (!is_unchanged(*first->second)) return true;
    if (entries_.entry(slot.old).reference) {
        cAttrNode const *const node = path_end(slot.old);
        if (!node || !node->valref()->equal(slot.node->valref())) return true; // RUNS USER CODE
    }
    Item &again = add(&item, slot, slot.node->valref());
    again.source = slot.old;
    again.how = Item::as_it_was;
    return true;
}

bool Plan::is_unchanged(Item const &item) const {
    if (item.is_new() || item.source != item.old) return false;
    if (item.how != Item::block) return item.how == Item::as_it_was;
    std::vector<cat::SourceEntry> const parts = entries_.inside(item.old);
    return std::all_of(item.children.begin(), item.children.end(),
                       [&](Item const *child) { return is_unchanged(*child); }) &&
           std::count_if(parts.begin(), parts.end(), [&](cat::SourceEntry const &part) {
               return entries_.anid(part.number) != 0;
           }) == static_cast<std::ptrdiff_t>(item.children.size());
}

void Plan::add_fresh_children(Item &item) {
    for (Slot &slot : slots_of(*container_in(item.value), true))
        settle(add(&item, slot, slot.node->valref()));
}

// Does the node have the same value as before, without a change inside it?
bool Plan::is_as_before(WasEntry const &was, cAttrNode const &node) const {
    if (was.value != node.valref()) return false;
    if (is_constant(was.value)) return true;
    cMapObj const *const container = container_in(was.value);
    if (!container) return before_.is_still(was, was.value);
    std::vector<WasEntry> const *const entries = before_.entries(was.value.get());
    cAttrHash const &hash = container->datamap();
    if (!entries || entries->size() != hash.used()) return false;
    cAttrNode const *inner = hash.first();
    return std::all_of(entries->begin(), entries->end(), [&](WasEntry const &entry) {
        cAttrNode const *const now = std::exchange(inner, hash.next(inner));
        return now->anid() == entry.anid && is_as_before(entry, *now);
    });
}

// The entries that a container must have in the text, each with its first former entry as `old`.
// If the container keeps its brackets, an unchanged value without an entry is a default and is not
// written.
Plan::Slots Plan::slots_of(cMapObj const &container, bool fresh) {
    Slots slots;
    cAttrHash const &hash = container.datamap();
    bool const merged =
        before_.is_donated(&container) && (container.is_map() || is_list(container));
    bool const has_defaults = !merged; // else a reference under a repeated key added such values
    size_t position = 0;
    for (cAttrNode const *node = hash.first(); node; node = hash.next(node), ++position) {
        WasEntry const *was = matching_.was(*node);
        size_t old = was ? entry_of(*was, false) : none;
        if (!fresh && was && old == none && has_defaults && is_as_before(*was, *node)) continue;
        WasEntry const *const donated = was ? matching_.donated(*was, *node) : nullptr;
        bool const gone = !was && (was = matching_.take_removed(*node));
        if (gone) old = entry_of(*was, true);
        slots.push_back({old, node, position, true, donated ? entry_of(*donated, true) : none});
    }
    return slots;
}

// Entries that keep their order stay where they are. All others, and new ones, are written after
// their predecessor. Those that precede all entries that stay are written before the first of them.
// Those that follow all of them, or all if none stays, are written at the end of the last block.
void Plan::arrange(cMapObj const &container, std::vector<size_t> const &blocks) {
    Slots wanted = slots_of(container, false);
    std::unordered_map<std::uint32_t, std::vector<std::pair<size_t, size_t>>>
        by_anid; // block, number
    for (size_t const block : blocks)
        for (cat::SourceEntry const &entry : entries_.inside(block))
            if (!is_left_out(entry.number))
                by_anid[entries_.anid(entry.number)].emplace_back(block, entry.number);
    auto const in_blocks = [&](Slot const &slot) {
        auto const found = slot.old == none ? by_anid.end() : by_anid.find(entries_.anid(slot.old));
        return found == by_anid.end() ? nullptr : &found->second;
    };
    std::vector<size_t> numbers, candidates;
    for (size_t i = 0; i < wanted.size(); ++i)
        if (auto const *const found = in_blocks(wanted[i])) {
            numbers.push_back(found->front().second);
            candidates.push_back(i);
        }
    std::vector<bool> const stays = rising(numbers);
    for (size_t i = 0; i < candidates.size(); ++i) wanted[candidates[i]].moved = !stays[i];

    std::unordered_map<size_t, Slots> after; // entries that follow an entry that stays
    Slots front, *run = &front;
    std::unordered_map<std::uint32_t, Slot const *> staying;
    for (Slot const &slot : wanted)
        if (slot.moved) {
            run->push_back(slot);
            if (auto const *const found = in_blocks(slot)) run->back().old = found->back().second;
        } else {
            staying.emplace(entries_.anid(slot.old), &slot);
            run = &after[slot.old];
        }
    Slots at_end;
    if (run != &front) at_end.swap(*run);
    for (size_t const block : blocks) {
        Slots &slots = arranged_[block];
        for (cat::SourceEntry const &entry : entries_.inside(block)) {
            auto const stay = staying.find(entries_.anid(entry.number));
            if (stay == staying.end() || is_left_out(entry.number)) continue;
            slots.insert(slots.end(), front.begin(), front.end());
            front.clear();
            slots.push_back(*stay->second);
            slots.back().old = entry.number;
            Slots const &more = after[entry.number];
            slots.insert(slots.end(), more.begin(), more.end());
        }
    }
    Slots &last = arranged_[blocks.back()];
    last.insert(last.end(), front.begin(), front.end());
    last.insert(last.end(), at_end.begin(), at_end.end());
}

// --- references ---

namespace {

// The keys of a path in the text; empty if the path contains anything but keys and slashes.
std::vector<std::string> keys_of(std::string_view path) {
    std::vector<std::string> keys;
    size_t const first = path.find_first_not_of(" /");
    if (first == std::string_view::npos) return keys;
    path.remove_prefix(first);
    for (size_t at = 0; at < path.size(); ++at) {
        size_t const begin = at;
        char const quote = path[at] == '"' || path[at] == '\'' ? path[at++] : '\0';
        for (; at < path.size() && path[at] != (quote ? quote : '/'); ++at)
            if (quote && path[at] == '\\') ++at;
        if (quote) ++at;
        if (at < path.size() && path[at] != '/') return {};
        keys.emplace_back(path.substr(begin, at - begin));
    }
    return keys;
}

} // namespace

// The node with this key in a container that is being written.
cAttrNode const *Plan::node_at(Item const &item, std::string const &key) const {
    objref value;
    if (cObj::readobj(key.c_str(), value) != 0 || !value) return nullptr;
    cAttrHash const &hash = container_in(item.value)->datamap();
    if (!is_list(*item.value)) return hash.find(value);
    int const index = cat::as_index(value);
    if (index < 0) return nullptr;
    size_t const position = static_cast<size_t>(index);
    if (position < item.children.size() &&
        (item.value->is_set() || item.children[position]->position == position))
        return item.children[position]->node;
    return item.value->is_vector() ? hash.findpos(static_cast<unsigned>(index)) : nullptr;
}

// Does the written path of this reference still lead to the value?
bool Plan::path_holds(size_t reference, objref const &value) const {
    cAttrNode const *const node = path_end(reference);
    return node && node->valref() == value && passed_.count(node) > 0;
}

// Does the reader still get the value from this reference? From a reference into a typed value it
// gets a copy, so this compares texts. If any key is repeated, a reference may stand for an earlier
// value of its key, so this returns true.
bool Plan::reads_as(size_t reference, objref const &value) const {
    if (entries_.is_once(reference)) return false;
    if (entries_.any_repeated()) return true;
    cAttrNode const *const node = path_end(reference);
    return node && exact_text(node->valref()) == exact_text(value);
}

// The node to which the path of this reference leads now, or null.
cAttrNode const *Plan::path_end(size_t reference) const {
    cat::Span const span = entries_.entry(reference).value;
    std::string_view const text = text_.substr(span.begin, span.size());
    size_t const open = text.find('('), close = text.rfind(')');
    if (open == std::string_view::npos || close == std::string_view::npos) return nullptr;
    cMapObj const *container = container_in(root_);
    cAttrNode const *node = nullptr;
    for (std::string const &key : keys_of(text.substr(open + 1, close - open - 1))) {
        if (!container) return nullptr;
        auto const written = written_.find(container);
        if (written == written_.end() || written->second->node != node) return nullptr;
        node = node_at(*written->second, key);
        if (!node) return nullptr;
        container = container_in(node->valref());
    }
    return node;
}

} // namespace qrv::edit
