#include "tests/reference/transcript.h"

#include "qrv/containers/cattspec.h"
#include "qrv/containers/cchoiceval.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypeobj.h"
#include "tests/reference/user_types.h"

#include <algorithm>
#include <cctype>
#include <cstdio>

namespace reference {

namespace {
constexpr size_t limit = 4'000'000;
constexpr unsigned max_depth = 150; // of the recursion

template <class T> T const *held(cObj const *value) {
    auto const *const holder = dynamic_cast<cObjDR<T> const *>(value);
    return holder ? holder->valptr() : nullptr;
}

std::string number(double value) {
    char text[40];
    std::snprintf(text, sizeof text, "%a", value);
    return text;
}

std::string hex(unsigned bits) {
    char text[16];
    std::snprintf(text, sizeof text, "%x", bits);
    return text;
}

// Replaces "id=12, refs=3" by "id=, refs=": these numbers may differ.
void leave_out_numbers(std::string &text) {
    for (char const *const name : {"/* id=", ", refs="})
        for (size_t at = text.find(name); at != std::string::npos; at = text.find(name, at)) {
            at += std::string(name).size();
            size_t const end = std::min(text.find_first_not_of("0123456789", at), text.size());
            text.erase(at, end - at);
        }
}

std::vector<unsigned> ranks_of(std::vector<std::uint32_t> const &ids) {
    std::vector<std::uint32_t> sorted = ids;
    std::sort(sorted.begin(), sorted.end());
    std::vector<unsigned> ranks;
    for (std::uint32_t const id : ids)
        ranks.push_back(static_cast<unsigned>(std::lower_bound(sorted.begin(), sorted.end(), id) -
                                              sorted.begin()));
    return ranks;
}
} // namespace

std::string &transcript() {
    static std::string text;
    return text;
}

void say(std::string const &line) {
    std::string &text = transcript();
    if (text.size() < limit) text.append(line).push_back('\n');
}

std::string shown(std::string const &text) {
    std::string plain = text;
    leave_out_numbers(plain);
    std::string out;
    for (char const c : plain) {
        auto const byte = static_cast<unsigned char>(c);
        if (byte >= 32 && byte < 127 && c != '\\')
            out.push_back(c);
        else
            out.append(c == '\n' ? "\\n" : c == '\\' ? "\\\\" : "\\x" + hex(byte));
    }
    return out;
}

std::string label(cObj const *value) {
    if (!value) return "null";
    if (cAttrNode const *const constant = cat::find_const(value))
        return "#" + constant->key_as_string();
    std::string const name = value->type().name();
    if (auto const *const probe = dynamic_cast<cProbe const *>(value))
        return name + "@" + std::to_string(probe->serial) + "'" + shown(probe->text) + "'";
    if (auto const *const bag = dynamic_cast<cBag const *>(value))
        return name + "@" + std::to_string(bag->serial);
    if (auto const *const map = dynamic_cast<cMapObj const *>(value))
        return name + "[" + std::to_string(map->size()) + "]";
    if (auto const *const text = held<std::string>(value)) return name + "\"" + shown(*text) + "\"";
    if (auto const *const n = held<int>(value)) return name + " " + std::to_string(*n);
    if (auto const *const d = held<double>(value)) return name + " " + number(*d);
    if (auto const *const f = held<float>(value)) return name + " " + number(*f);
    if (auto const *const b = held<bool>(value)) return name + (*b ? " true" : " false");
    if (auto const *const type = dynamic_cast<cTypeObj const *>(value))
        return name + " '" + shown(type->name()) + "'";
    if (auto const *const it = dynamic_cast<cIterObj const *>(value))
        return name + (it->valid() ? " at " + label(it->key()) : " nowhere");
    return name;
}

void cWalk::value(std::string const &title, objref const &value) { put("", title, value.get()); }

void cWalk::hash(std::string const &title, cAttrHash const &hash) {
    say(title);
    entries("  ", hash);
}

void cWalk::entries(std::string const &indent, cAttrHash const &hash) {
    auto const [place, fresh] = hashes_.try_emplace(&hash, hashes_.size());
    std::string head = indent + "(hash " + std::to_string(place->second) + " slots " +
                       std::to_string(hash.slots()) + " used " + std::to_string(hash.used()) +
                       (hash.is_vector() ? " vector" : "") +
                       (hash.in_creation_order() ? "" : " moved") + " refs " +
                       std::to_string(hash.refs()) + " father " + (hash.father() ? "yes" : "no");
    say(head + (fresh ? ")" : " again)"));
    if (!fresh) return;
    for (cAttrNode const *node = hash.first(); node; node = hash.next(node)) {
        nodes_.push_back(node->anid());
        if (node->key()) keys_.push_back(node->key()->obid());
        std::string const bits =
            node->flags() ? " flags " + hex(static_cast<unsigned>(node->flags())) : "";
        std::string const own = node->map() == &hash ? "" : " astray";
        put(indent, label(node->key()) + bits + own, node->valref().get());
    }
    std::string const broken = hash.broken_rule(false);
    if (!broken.empty()) say(indent + "BROKEN " + broken.substr(0, 2));
}

void cWalk::put(std::string const &indent, std::string const &title, cObj const *value) {
    std::string line = indent + title + " = " + label(value);
    bool const plain = !value || cat::find_const(value);
    if (plain) return say(line);
    auto const [place, fresh] = numbers_.try_emplace(value, numbers_.size());
    line += " #" + std::to_string(place->second);
    if (!fresh) return say(line);
    values_.push_back(value->obid());
    auto const *const type = dynamic_cast<cTypeObj const *>(value);
    bool const registered = type && &cat::find_type(type->name()) == type;
    if (value->flags()) line += " flags " + hex(static_cast<unsigned>(value->flags()));
    if (!registered) line += " refs " + std::to_string(value->refs());
    say(line);
    if (++depth_ < max_depth && !(registered && depth_ > 1)) details(indent + "  ", *value);
    --depth_;
}

void cWalk::details(std::string const &indent, cObj const &value) {
    if (auto const *const map = dynamic_cast<cMapObj const *>(&value)) {
        if (map->entrytype()) say(indent + "entries of " + map->entrytype()->name());
        entries(indent, map->datamap());
    }
    if (auto const *const probe = dynamic_cast<cProbe const *>(&value))
        if (probe->held) put(indent, "held", probe->held.get());
    if (auto const *const spec = dynamic_cast<cAttspec const *>(&value)) {
        say(indent + "type " + (spec->get_type() ? spec->get_type()->name() : "any"));
        if (spec->get_default()) put(indent, "default", spec->get_default().get());
    }
    if (auto const *const type = dynamic_cast<cTypeObj const *>(&value))
        for (char const *const name : {"choices", "attspec"}) {
            objref const member = type->tmember(std::string(name));
            if (cObj::is_good(member)) put(indent, name, member.get());
        }
    if (value.has_ommap()) {
        say(indent + "own members");
        entries(indent + "  ", value.ommap());
    }
}

void cWalk::ranks() const {
    auto const line = [](std::string text, std::vector<std::uint32_t> const &ids) {
        for (unsigned const rank : ranks_of(ids)) text += " " + std::to_string(rank);
        say(text);
    };
    line("order of values", values_);
    line("order of keys", keys_);
    line("order of nodes", nodes_);
}

} // namespace reference
