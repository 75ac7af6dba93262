#include "edit/cplan.h"

// Items are settled in the order of the new text, so that a value is written where it is met first.
// A path in the text may only lead over values that are written on it, since that is how the
// reader follows it: an item's own parents are such.

#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/write/cwriter.h"

#include <algorithm>

namespace qrv::edit {

// --- the entries of the text ---

Entries::Entries(cat::SourceMap const &map) : map_(map) {
    anids_.reserve(map.size());
    for (size_t i = 0; i < map.size(); ++i) {
        anids_.push_back(map.entry(i).anid);
        if (anids_.back()) numbers_.emplace(anids_.back(), i);
    }
}

std::vector<size_t> Entries::of(std::uint32_t anid) const {
    std::vector<size_t> found;
    auto const [first, last] = numbers_.equal_range(anid);
    for (auto it = first; it != last; ++it) found.push_back(it->second);
    std::sort(found.begin(), found.end());
    return found;
}

cat::SourceEntry Entries::frame(size_t number) const {
    std::vector<cat::SourceEntry> const parts = map_.inside(number);
    bool const whole = parts.size() == 1 && anids_[parts[0].number] == 0 && parts[0].key.empty() &&
                       !parts[0].open.empty();
    return whole ? frame(parts[0].number) : entry(number);
}

std::vector<cat::SourceEntry> Entries::inside(size_t number) const {
    return map_.inside(frame(number).number);
}

// --- items ---

namespace {

bool is_list(cObj const &container) { return container.is_vector() || container.is_set(); }

// Can it be written anew with brackets of its own kind?
bool has_plain_brackets(cObj const &container) { return container.is_map() || is_list(container); }

// The places in a list of numbers that form a longest rising row.
std::vector<bool> rising(std::vector<size_t> const &numbers) {
    std::vector<size_t> last; // of rows of each length, their places
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
    : text_(text), entries_(entries), before_(before), root_(root), matching_(before, root) {
    settle(add(nullptr, {0, nullptr, 0, false}, root));
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
    item.node = slot.node;
    item.value = value;
    item.position = slot.position;
    item.old = slot.old;
    item.moved = slot.moved;
    if (parent) parent->children.push_back(&item);
    return item;
}

void Plan::settle(Item &item) {
    objref const was = item.old == none ? objref()
                       : item.old == 0  ? root_
                                        : before_.value(entries_.anid(item.old));
    bool const in_place = item.old != none && !entries_.entry(item.old).reference &&
                          matching_.continues(item.value, was);
    bool const shared = matching_.places(item.value) > 1 && !is_constant(item.value);
    if ((shared || container_in(item.value)) && settle_shared(item, in_place)) return;
    if (in_place)
        settle_here(item, was);
    else
        settle_from_elsewhere(item, was);
    if (item.node) passed_.insert(item.node);
}

// True if the value has been written before.
bool Plan::settle_shared(Item &item, bool in_place) {
    auto const [known, fresh] = written_.emplace(item.value.get(), &item);
    if (fresh) return false;
    if (in_place && known->second->node == item.node) return false; // its key is repeated
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

void Plan::settle_here(Item &item, objref const &was) {
    item.source = item.old;
    item.how = Item::as_it_was;
    if (container_in(item.value)) {
        item.how = Item::block;
        std::vector<size_t> blocks{item.old};
        if (item.node && !item.moved) {
            blocks = entries_.of(entries_.anid(item.old));
            std::erase_if(blocks, [&](size_t n) { return entries_.entry(n).reference; });
        }
        return add_children(item, blocks);
    }
    bool const last = item.old == 0 || entries_.of(entries_.anid(item.old)).back() == item.old;
    if (last && before_.text(was) != exact_text(item.value)) item.how = Item::literal;
}

void Plan::settle_from_elsewhere(Item &item, objref const &was) {
    item.source = definition(item.value);
    if (container_in(item.value)) {
        item.how = item.source == none ? Item::fresh : Item::block;
        if (item.how == Item::block) return add_children(item, {item.source});
        if (has_plain_brackets(*item.value)) return add_fresh_children(item);
        item.how = Item::literal;
        return;
    }
    if (item.source == none && was && &was->type() == &item.value->type() &&
        !entries_.entry(item.old).reference)
        item.source = item.old; // replaced by an equal one, perhaps
    bool const same =
        item.source != none &&
        (is_constant(item.value) || is_constant(was)
             ? item.value == was
             : before_.text(item.source == item.old ? was : item.value) == exact_text(item.value));
    item.how = same ? Item::as_it_was : Item::literal;
}

// The entry in which a value was written that is written elsewhere now.
size_t Plan::definition(objref const &value) {
    if (is_constant(value)) return none;
    if (!std::exchange(searched_, true)) {
        for (auto const &[container, was] : before_.containers())
            for (WasEntry const &entry : was)
                for (size_t const number : entries_.of(entry.anid))
                    if (!entries_.entry(number).reference && !is_constant(entry.value))
                        definitions_.emplace(entry.value.get(), number);
    }
    auto const found = definitions_.find(value.get());
    return found == definitions_.end() ? none : found->second;
}

void Plan::add_children(Item &item, std::vector<size_t> const &blocks) {
    if (!arranged_.count(item.source)) arrange(*container_in(item.value), blocks);
    Slots const slots = std::move(arranged_[item.source]);
    for (Slot const &slot : slots) settle(add(&item, slot, slot.node->valref()));
}

void Plan::add_fresh_children(Item &item) {
    for (Slot &slot : slots_of(*container_in(item.value)))
        settle(add(&item, slot, slot.node->valref()));
}

// A default that no text gave, and that is as it was.
bool Plan::is_unwritten(WasEntry const &was, cAttrNode const &node) const {
    return was.value == node.valref() && (container_in(was.value) || is_constant(was.value) ||
                                          before_.text(was.value) == exact_text(was.value));
}

// The entries of a container as they are to be in the text; `old` is the first of those in it.
Plan::Slots Plan::slots_of(cMapObj const &container) {
    Slots slots;
    cAttrHash const &hash = container.datamap();
    size_t position = 0;
    for (cAttrNode const *node = hash.first(); node; node = hash.next(node), ++position) {
        WasEntry const *was = matching_.was(*node);
        std::vector<size_t> numbers = was ? entries_.of(was->anid) : std::vector<size_t>();
        if (was && numbers.empty() && is_unwritten(*was, *node)) continue;
        bool const gone = !was && (was = matching_.take_gone(node->valref()));
        if (gone) numbers = entries_.of(was->anid);
        slots.push_back({numbers.empty() ? none
                         : gone          ? numbers.back()
                                         : numbers.front(),
                         node, position, true});
    }
    return slots;
}

// Entries that keep their order stay where they are; all others, and new ones, come after the one
// before them, at the front before the first that stays, or at the end of the last block.
void Plan::arrange(cMapObj const &container, std::vector<size_t> const &blocks) {
    Slots wanted = slots_of(container);
    std::unordered_map<std::uint32_t, std::vector<std::pair<size_t, size_t>>>
        places; // block, number
    for (size_t const block : blocks)
        for (cat::SourceEntry const &entry : entries_.inside(block))
            places[entries_.anid(entry.number)].emplace_back(block, entry.number);
    auto const places_of = [&](Slot const &slot) {
        auto const found = slot.old == none ? places.end() : places.find(entries_.anid(slot.old));
        return found == places.end() ? nullptr : &found->second;
    };
    std::vector<size_t> numbers, candidates;
    for (size_t i = 0; i < wanted.size(); ++i)
        if (auto const *const found = places_of(wanted[i])) {
            numbers.push_back(found->front().second);
            candidates.push_back(i);
        }
    std::vector<bool> const stays = rising(numbers);
    for (size_t i = 0; i < candidates.size(); ++i) wanted[candidates[i]].moved = !stays[i];

    std::unordered_map<size_t, Slots> after; // what comes after an entry that stays
    Slots front, *run = &front;
    std::unordered_map<std::uint32_t, Slot const *> staying;
    for (Slot const &slot : wanted)
        if (slot.moved) {
            run->push_back(slot);
            if (auto const *const found = places_of(slot)) run->back().old = found->back().second;
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
            if (stay == staying.end()) continue;
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

// The keys of a path in a text; empty if it is more than keys and slashes.
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

cAttrNode const *node_of(cMapObj const &container, std::string const &key) {
    objref value;
    if (cObj::readobj(key.c_str(), value) != 0 || !value) return nullptr;
    cAttrHash const &hash = container.datamap();
    if (!is_list(container)) return hash.find(value);
    int const index = cat::as_index(value);
    return index < 0 ? nullptr : hash.findpos(static_cast<unsigned>(index));
}

} // namespace

// Does the path of that reference, as it is written, still lead to the value?
bool Plan::path_holds(size_t reference, objref const &value) const {
    cat::Span const span = entries_.entry(reference).value;
    std::string_view const text = text_.substr(span.begin, span.size());
    size_t const open = text.find('('), close = text.rfind(')');
    if (open == std::string_view::npos || close == std::string_view::npos) return false;
    cMapObj const *container = container_in(root_);
    cAttrNode const *node = nullptr;
    for (std::string const &key : keys_of(text.substr(open + 1, close - open - 1))) {
        if (!container) return false;
        if (node) {
            auto const written = written_.find(container);
            if (written == written_.end() || written->second->node != node) return false;
        }
        node = node_of(*container, key);
        if (!node || !passed_.count(node)) return false;
        container = container_in(node->valref());
    }
    return node && node->valref() == value;
}

} // namespace qrv::edit
